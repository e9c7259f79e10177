#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <string_view>

#include "kvsc/HttpRequest.h"

namespace kvsc {
namespace {

HttpRequest::Texts goodTexts() {
  return {"GET", "host", "https", "/p", "text/xml", "Agent 1", "x/y", "UTF-8", "A: 1\r\nB: 2"};
}

using TextField = std::string_view HttpRequest::Texts::*;

struct FieldCase {
  TextField field;
  const char* name;
};

void PrintTo(const FieldCase& c, std::ostream* out) { *out << c.name; }

class FindForbidden : public testing::TestWithParam<FieldCase> {};

TEST_P(FindForbidden, NamesTheTextThatContainsALineEndOrAZeroByte) {
  for (const std::string_view bad : {std::string_view("\r"), std::string_view("\n"),
                                     std::string_view("a\r\nX: 1"), std::string_view("a\0b", 3)}) {
    HttpRequest::Texts texts = goodTexts();
    texts.*GetParam().field = bad;
    EXPECT_EQ(HttpRequest::findForbidden(texts), std::string("Request refused: the ") +
                                                     GetParam().name +
                                                     " holds a line end or a zero byte.");
  }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, FindForbidden,
    testing::Values(FieldCase{&HttpRequest::Texts::method, "method"},
                    FieldCase{&HttpRequest::Texts::host, "host"},
                    FieldCase{&HttpRequest::Texts::port, "port"},
                    FieldCase{&HttpRequest::Texts::path, "path"},
                    FieldCase{&HttpRequest::Texts::responseType, "response type"},
                    FieldCase{&HttpRequest::Texts::userAgent, "user agent"},
                    FieldCase{&HttpRequest::Texts::contentType, "content type"},
                    FieldCase{&HttpRequest::Texts::charset, "charset"}));

std::string refusalOfExtraHeaders(std::string_view extraHeaders) {
  HttpRequest::Texts texts = goodTexts();
  texts.extraHeaders = extraHeaders;
  return HttpRequest::findForbidden(texts);
}

TEST(FindForbiddenExtraHeaders, AllowsLinesBetweenLineEnds) {
  EXPECT_EQ(refusalOfExtraHeaders(""), "");
  EXPECT_EQ(refusalOfExtraHeaders("A: 1"), "");
  EXPECT_EQ(refusalOfExtraHeaders("A: 1\r\nB: 2\r\nC: 3"), "");
}

TEST(FindForbiddenExtraHeaders, RefusesEverythingThatEndsTheHeadersOrALineEarly) {
  for (const std::string_view bad :
       {std::string_view("\r\n"), std::string_view("A: 1\r\n"), std::string_view("\r\nA: 1"),
        std::string_view("A: 1\r\n\r\nB: 2"), std::string_view("A: 1\nB: 2"),
        std::string_view("A: 1\rB: 2"), std::string_view("A: 1\r\r\nB: 2"),
        std::string_view("A: 1\r\n\nB: 2"), std::string_view("A: \0", 4)}) {
    EXPECT_EQ(refusalOfExtraHeaders(bad),
              "Request refused: the extra headers are not lines of text separated by line ends.");
  }
}

TEST(FindForbidden, HasNothingToSayAboutGoodTexts) {
  EXPECT_EQ(HttpRequest::findForbidden(goodTexts()), "");
  EXPECT_EQ(HttpRequest::findForbidden({}), "");
}

}  // namespace
}  // namespace kvsc
