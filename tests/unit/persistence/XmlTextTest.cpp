#include <gmock/gmock.h>

#include <algorithm>

#include "persistence/XmlText.h"

namespace persistence {
namespace {

const std::string kReplacement = "\xEF\xBF\xBD";

std::string carried(const std::string& bytes, std::size_t limit = kLongestXmlValue) {
  return carriedByXml(bytes, limit);
}

TEST(XmlText, ValidBytesStayAsTheyAre) {
  for (const char* bytes : {"", "a", "\t\n\r ~\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80",
                            "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBD", "\xF0\x90\x80\x80",
                            "\xF0\x9F\xBF\xBE", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_EQ(carried(bytes), bytes);
  }
}

TEST(XmlText, EachByteOfMalformedUtf8IsReplaced) {
  struct {
    const char* bytes;
    int replacements;
  } const cases[] = {
      {"\x80", 1},              // a continuation alone
      {"\xC3", 1},              // a sequence cut short
      {"\xC0\xAF", 2},          // overlong
      {"\xC1\xBF", 2},          //
      {"\xE0\x9F\xBF", 3},      //
      {"\xF0\x8F\xBF\xBF", 4},  //
      {"\xED\xA0\x80", 3},      // a surrogate
      {"\xED\xBF\xBF", 3},      //
      {"\xEF\xBF\xBE", 3},      // not XML characters
      {"\xEF\xBF\xBF", 3},      //
      {"\xF4\x90\x80\x80", 4},  // beyond Unicode
      {"\xF5\x80\x80\x80", 4},  //
      {"\xFE\xFF", 2},          //
      {"\xF0\x9F\x98", 3},      // cut short
  };
  for (const auto& [bytes, replacements] : cases) {
    std::string expected = "a";
    for (int i = 0; i < replacements; ++i) expected += kReplacement;
    EXPECT_EQ(carried(std::string("a") + bytes + "z"), expected + "z") << bytes;
  }
}

TEST(XmlText, ACharacterAfterABrokenSequenceIsKept) {
  EXPECT_EQ(carried("\xE2\x82\xC3\xA4"), kReplacement + kReplacement + "\xC3\xA4");
}

TEST(XmlText, ControlCharactersAreReplacedInBothForms) {
  EXPECT_EQ(carried(std::string("\0\x01\x1F", 3)), kReplacement + kReplacement + kReplacement);
  EXPECT_EQ(carriedByXml(std::wstring(L"\0\x01\x1F", 3)), L"\uFFFD\uFFFD\uFFFD");
}

TEST(XmlText, TextIsCutBeforeTheCharacterThatGoesBeyondTheLimit) {
  EXPECT_EQ(carried("abcdef", 4), "abcd");
  EXPECT_EQ(carried("abc\xC3\xA4", 4), "abc");
  EXPECT_EQ(carried("abc\xC3\xA4", 5), "abc\xC3\xA4");
  EXPECT_EQ(carried("\xFF\xFF", 3), kReplacement);
  EXPECT_EQ(carried("a", 0), "");
  EXPECT_EQ(carriedByXml(std::wstring(L"ab\u20AC\U0001F600"), 4), L"ab");
  EXPECT_EQ(carriedByXml(std::wstring(L"ab\u20AC\U0001F600"), 5), L"ab\u20AC");
  EXPECT_EQ(carriedByXml(std::wstring(L"ab\u20AC\U0001F600"), 9), L"ab\u20AC\U0001F600");
}

TEST(XmlText, AnAmpersandCountsAsFiveBytes) {
  EXPECT_EQ(carried("&&&", 10), "&&");
  EXPECT_EQ(carriedByXml(std::wstring(L"a&&&"), 10), L"a&");
}

/// The limit for so many texts of one length.
std::size_t limitFor(std::size_t texts, std::size_t length) {
  return longestValueFor([=](std::size_t limit) { return texts * std::min(length, limit); });
}

TEST(XmlText, TheLongestValueShrinksOnlyForEnormousQueues) {
  EXPECT_EQ(limitFor(0, 0), kLongestXmlValue);
  EXPECT_EQ(limitFor(10'000, 1'000), kLongestXmlValue);
  EXPECT_EQ(limitFor(25, 50'000'000), kLongestXmlValue);
  EXPECT_EQ(limitFor(50, 50'000'000), kLongestXmlValue / 2);
  const std::size_t limit = limitFor(1'000'000, 5'000);
  EXPECT_GT(limit, 100U);
  EXPECT_LE(limit * 6 * 1'000'000, 1'500'000'000U);
}

}  // namespace
}  // namespace persistence
