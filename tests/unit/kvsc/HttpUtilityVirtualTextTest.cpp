#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <string>

#include "kvsc/HttpUtilityVirtual.h"
#include "tests/unit/kvsc/Bytes.h"
#include "tests/unit/kvsc/NoMemory.h"

namespace kvsc {
namespace {

/// Finds in a response what the test told it to find.
class Parser : public HttpUtilityVirtual {
 public:
  HttpErrorIds get(const std::string& /*url*/) override { return HTTP_ERROR_FAILED; }
  HttpErrorIds post(const std::string& /*url*/, const std::string& /*data*/) override {
    return HTTP_ERROR_FAILED;
  }
  std::string parseResponse(const unsigned char* data, int length) override {
    parsed.assign(reinterpret_cast<const char*>(data), static_cast<std::size_t>(length));
    return fault;
  }

  std::string parsed = "(not asked)";
  std::string fault;
};

/// One check of a response, and everything it said.
struct Check {
  Check(Parser& parser, const std::string& response, bool checkHtml)
      : length(static_cast<int>(response.size())) {
    result =
        parser.processServerResponse(bytesOf(response), &length, checkHtml, &ok, &error, message);
    bool okOfText = !ok;
    std::string messageOfText;
    EXPECT_EQ(parser.processServerResponse(response, checkHtml, &okOfText, nullptr, messageOfText),
              result);
    EXPECT_EQ(okOfText, ok);
    EXPECT_EQ(messageOfText, message);
  }

  int length;
  bool result = false;
  bool ok = false;
  HttpErrorIds error = HTTP_ERROR_NONE;
  std::string message = "old message";
};

TEST(ProcessServerResponse, RefusesAnHtmlPage) {
  Parser parser;
  const Check check(parser, "<!DOCTYPE HTML PUBLIC>\r\n", true);
  EXPECT_FALSE(check.result);
  EXPECT_FALSE(check.ok);
  EXPECT_EQ(check.error, HTTP_ERROR_FAILED);
  EXPECT_EQ(check.message, "Server returned HTML");
  EXPECT_EQ(check.length, 22);
  EXPECT_EQ(parser.parsed, "(not asked)");
}

TEST(ProcessServerResponse, RecognisesAPageByItsFirstFourteenBytes) {
  Parser parser;
  EXPECT_FALSE(Check(parser, "<!DOCTYPE HTML", true).ok);
  EXPECT_FALSE(Check(parser, "<!DOCTYPE HTML\n", true).ok);
  EXPECT_TRUE(Check(parser, "<!DOCTYPE HTM", true).ok);
  EXPECT_TRUE(Check(parser, "<!doctype html>", true).ok);
  EXPECT_TRUE(Check(parser, " <!DOCTYPE HTML>", true).ok);
  EXPECT_TRUE(Check(parser, "", true).ok);
}

TEST(ProcessServerResponse, LeavesTheErrorOfAGoodResponseAlone) {
  Parser parser;
  for (const bool checkHtml : {true, false}) {
    const std::string response = "<answer/>";
    int length = static_cast<int>(response.size());
    bool ok = false;
    HttpErrorIds error = kvsc::HTTP_ERROR_CANCELLED;
    std::string message;
    parser.processServerResponse(bytesOf(response), &length, checkHtml, &ok, &error, message);
    EXPECT_EQ(error, kvsc::HTTP_ERROR_CANCELLED);
  }
}

TEST(ProcessServerResponse, AcceptsAGoodResponse) {
  Parser parser;
  const Check check(parser, "<answer/>", true);
  EXPECT_TRUE(check.result);
  EXPECT_EQ(check.error, HTTP_ERROR_NONE);
  EXPECT_EQ(check.message, "");
}

TEST(ProcessServerResponse, LeavesTheAnswerToTheParser) {
  Parser parser;
  const Check good(parser, "<answer/>\r\n", false);
  EXPECT_TRUE(good.ok);
  EXPECT_EQ(good.message, "");
  EXPECT_EQ(parser.parsed, "<answer/>");
  EXPECT_EQ(good.length, 9);
  parser.fault = "no such title";
  const Check bad(parser, "<!DOCTYPE HTML>", false);
  EXPECT_FALSE(bad.ok);
  EXPECT_FALSE(bad.result);
  EXPECT_EQ(bad.message, "no such title");
  EXPECT_EQ(bad.error, HTTP_ERROR_NONE);
}

TEST(ProcessServerResponse, NeedsNeitherOkNorError) {
  Parser parser;
  std::string message;
  EXPECT_FALSE(parser.processServerResponse("<!DOCTYPE HTML>", true, nullptr, nullptr, message));
}

TEST(ProcessServerResponse, OfATextNamesTheErrorToo) {
  Parser parser;
  std::string message;
  bool ok = true;
  HttpErrorIds error = HTTP_ERROR_NONE;
  EXPECT_FALSE(parser.processServerResponse("<!DOCTYPE HTML>", true, &ok, &error, message));
  EXPECT_FALSE(ok);
  EXPECT_EQ(error, HTTP_ERROR_FAILED);
  EXPECT_EQ(message, "Server returned HTML");
}

TEST(ProcessServerResponse, LeavesABareLineEnd) {
  Parser parser;
  const Check check(parser, "\r\n", false);
  EXPECT_TRUE(check.ok);
  EXPECT_EQ(check.length, 2);
  EXPECT_EQ(parser.parsed, "\r\n");
}

struct StripCase {
  const char* text;
  const char* stripped;
};

void PrintTo(const StripCase& c, std::ostream* out) {
  *out << testing::PrintToString(std::string(c.text));
}

class StripCarriageReturnLineFeed : public testing::TestWithParam<StripCase> {};

TEST_P(StripCarriageReturnLineFeed, TakesOneLineEndOff) {
  std::string text = GetParam().text;
  int length = static_cast<int>(text.size());
  HttpUtilityVirtual::stripCarriageReturnLineFeed(bytesOf(text), &length);
  EXPECT_EQ(text.substr(0, static_cast<std::size_t>(length)), GetParam().stripped);
  HttpUtilityVirtual::stripCarriageReturnLineFeed(text);
  EXPECT_EQ(text, GetParam().stripped);
}

INSTANTIATE_TEST_SUITE_P(Texts, StripCarriageReturnLineFeed,
                         testing::Values(StripCase{"", ""}, StripCase{"\n", "\n"},
                                         StripCase{"\r\n", "\r\n"}, StripCase{"a\n", "a\n"},
                                         StripCase{"ab\n", "ab"}, StripCase{"a\r\n", "a"},
                                         StripCase{"ab\r\n", "ab"}, StripCase{"ab\r", "ab\r"},
                                         StripCase{"ab\n\n", "ab\n"}, StripCase{"ab\r\r\n", "ab\r"},
                                         StripCase{"\n\r\n", "\n"}, StripCase{"abc", "abc"}));

std::string urlEncode(const std::string& text) {
  int length = -1;
  unsigned char* encoded =
      HttpUtilityVirtual::urlEncode(bytesOf(text), static_cast<int>(text.size()), &length);
  const std::string result(reinterpret_cast<const char*>(encoded),
                           static_cast<std::size_t>(length));
  HttpUtilityVirtual::release(encoded);
  EXPECT_EQ(HttpUtilityVirtual::urlEncode(text), result);
  return result;
}

TEST(UrlEncode, KeepsLettersDigitsAndSevenMarks) {
  std::string kept;
  for (int byte = 0; byte < 256; ++byte) {
    const std::string one(1, static_cast<char>(byte));
    const std::string encoded = urlEncode(one);
    if (encoded == one) {
      kept += one;
    } else {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "%%%02X", static_cast<unsigned>(byte));
      EXPECT_EQ(encoded, escaped);
    }
  }
  EXPECT_EQ(kept, "!()-.0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz~");
}

TEST(UrlEncode, EscapesAStarAndABlank) { EXPECT_EQ(urlEncode("a b*'"), "a%20b%2A%27"); }

TEST(UrlEncode, EscapesUtf8AndZeroBytes) {
  EXPECT_EQ(urlEncode(std::string("\0\xc3\xa9z", 4)), "%00%C3%A9z");
}

TEST(UrlEncode, ReturnsNullForNoData) {
  const unsigned char byte = 'a';
  int length = -1;
  EXPECT_EQ(HttpUtilityVirtual::urlEncode(nullptr, 3, &length), nullptr);
  EXPECT_EQ(length, 0);
  length = -1;
  EXPECT_EQ(HttpUtilityVirtual::urlEncode(&byte, 0, &length), nullptr);
  EXPECT_EQ(length, 0);
  length = -1;
  EXPECT_EQ(HttpUtilityVirtual::urlEncode(&byte, -1, &length), nullptr);
  EXPECT_EQ(length, 0);
  EXPECT_EQ(HttpUtilityVirtual::urlEncode(std::string()), "");
}

TEST(UrlEncode, ReturnsNullWithoutMemory) {
  const unsigned char byte = 'a';
  const NoMemory noMemory;
  int length = -1;
  EXPECT_EQ(HttpUtilityVirtual::urlEncode(&byte, 1, &length), nullptr);
  EXPECT_EQ(length, 0);
}

TEST(UrlEncode, TakesTextsUpToTheLongestWhoseResultFitsAnInt) {
  constexpr int kLongest = std::numeric_limits<int>::max() / 3;
  const unsigned char byte = 'a';  // not read without memory for the result
  const NoMemory noMemory;
  int length = -1;
  EXPECT_EQ(HttpUtilityVirtual::urlEncode(&byte, kLongest + 1, &length), nullptr);
  EXPECT_EQ(noMemory.bytesRefused(), 0u);
  EXPECT_EQ(HttpUtilityVirtual::urlEncode(&byte, kLongest, &length), nullptr);
  EXPECT_EQ(noMemory.bytesRefused(), std::size_t{3} * kLongest);
}

struct UrlCase {
  unsigned int port;
  const char* url;
};

void PrintTo(const UrlCase& c, std::ostream* out) { *out << c.port; }

class GenerateUrl : public testing::TestWithParam<UrlCase> {};

TEST_P(GenerateUrl, DecidesByThePort) {
  EXPECT_EQ(HttpUtilityVirtual::generateUrl("h", GetParam().port, "/x"), GetParam().url);
}

INSTANTIATE_TEST_SUITE_P(
    Ports, GenerateUrl,
    testing::Values(UrlCase{80, "http://h/x"}, UrlCase{443, "https://h/x"},
                    UrlCase{7001, "http://h:7001/x"}, UrlCase{7002, "https://h:7002/x"},
                    UrlCase{8000, "http://h/x"}, UrlCase{8080, "http://h:8080/x"},
                    UrlCase{8443, "https://h:8443/x"}, UrlCase{0, "http://h/x"}));

TEST(GenerateUrlPath, IsTakenAsGiven) {
  EXPECT_EQ(HttpUtilityVirtual::generateUrl("", 80, ""), "http://");
  EXPECT_EQ(HttpUtilityVirtual::generateUrl("h", 80, "x y"), "http://hx y");
}

TEST(ReplaceCharactersWithHtmlKeyWords, ReplacesAmpersandsAndApostrophesAlone) {
  const auto replace = HttpUtilityVirtual::replaceCharactersWithHtmlKeyWords;
  EXPECT_EQ(replace("a&'b"), "a&amp;&apos;b");
  EXPECT_EQ(replace("&&"), "&amp;&amp;");
  EXPECT_EQ(replace("''"), "&apos;&apos;");
  EXPECT_EQ(replace("&apos;"), "&amp;apos;");
  EXPECT_EQ(replace("<a href=\"x\">"), "<a href=\"x\">");
  EXPECT_EQ(replace(""), "");
}

}  // namespace
}  // namespace kvsc
