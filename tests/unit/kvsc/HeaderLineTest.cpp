#include <gtest/gtest.h>

#include "kvsc/HeaderLine.h"

namespace kvsc {
namespace {

std::string valueIn(std::string_view line) { return headerFieldIn(line)->value; }

TEST(HeaderLineTest, ALineWithHttpAnywhereIsAStatusLine) {
  EXPECT_TRUE(isStatusLine("HTTP/1.0 200 OK\r\n"));
  EXPECT_TRUE(isStatusLine("Via: 1.1 HTTP proxy\r\n"));
  EXPECT_FALSE(isStatusLine("Location: http://host/\r\n"));
  EXPECT_FALSE(isStatusLine(""));
}

TEST(HeaderLineTest, TheStatusCodeIsTheSecondWord) {
  EXPECT_EQ(statusCodeIn("HTTP/1.0 200 OK\r\n"), 200);
  EXPECT_EQ(statusCodeIn("HTTP/1.1 304\r\n"), 304);
  EXPECT_EQ(statusCodeIn("  HTTP/1.1\t 404x Not Found"), 404);
  EXPECT_EQ(statusCodeIn("HTTP/1.1 -1 Odd"), -1);
}

TEST(HeaderLineTest, AValueThatBeginsWithANumberIsTakenForTheStatusCode) {
  EXPECT_EQ(statusCodeIn("Via: 1.1 HTTP proxy\r\n"), 1);
}

TEST(HeaderLineTest, AStatusLineWithoutANumberHasNoCode) {
  for (const char* line :
       {"HTTP", "HTTP/1.0\r\n", "HTTP/1.0 OK 200", "Server: HTTP 200", "HTTP/1.0 99999999999 OK"}) {
    EXPECT_EQ(statusCodeIn(line), std::nullopt) << line;
  }
}

TEST(HeaderLineTest, NameAndValueKeepTheirCase) {
  const auto field = headerFieldIn("Content-TYPE: Text/Xml\r\n");
  EXPECT_EQ(field->name, "Content-TYPE");
  EXPECT_EQ(field->value, "Text/Xml");
}

TEST(HeaderLineTest, TheNameEndsAtTheFirstColon) {
  const auto field = headerFieldIn("Location: http://host:80/\r\n");
  EXPECT_EQ(field->name, "Location");
  EXPECT_EQ(field->value, "http://host:80/");
}

TEST(HeaderLineTest, WithoutABlankAfterTheColonTheFirstCharacterIsLost) {
  EXPECT_EQ(valueIn("Length:42\r\n"), "2");
}

TEST(HeaderLineTest, MoreThanOneBlankStaysInTheValue) { EXPECT_EQ(valueIn("A:  b\r\n"), " b"); }

TEST(HeaderLineTest, ABareLineFeedTakesTheLastCharacterWithIt) {
  EXPECT_EQ(valueIn("Name: value\n"), "valu");
}

TEST(HeaderLineTest, WithoutALineFeedTheValueEndsAtACarriageReturnOrTheEnd) {
  EXPECT_EQ(valueIn("Name: value\r"), "value");
  EXPECT_EQ(valueIn("Name: value"), "value");
}

TEST(HeaderLineTest, AValueTooShortForItsFrameIsEmpty) {
  for (const char* line :
       {"A:", "A:\n", "A:\r\n", "A: \r\n", "A:x\r\n", "A: \n", ":", ": \r\n", "\n:", "\r\n: x"}) {
    EXPECT_EQ(valueIn(line), "") << line;
  }
}

TEST(HeaderLineTest, ALineWithoutAColonHasNoField) {
  EXPECT_FALSE(headerFieldIn("\r\n").has_value());
  EXPECT_FALSE(headerFieldIn("nothing here\r\n").has_value());
  EXPECT_FALSE(headerFieldIn("").has_value());
}

TEST(HeaderLineTest, AZeroByteIsACharacterLikeAnother) {
  EXPECT_EQ(valueIn(std::string_view("A: b\0c\r\n", 8)), std::string("b\0c", 3));
}

}  // namespace
}  // namespace kvsc
