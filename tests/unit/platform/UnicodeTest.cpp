#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "kvpm/Unicode.h"
#include "playerx/platform/Text.h"

namespace {

using namespace std::string_literals;

struct Case {
  std::string narrow;
  std::wstring wide;
};

// Texts that each side can carry, so that they must come back from the other.
std::vector<Case> wellFormed() {
  return {
      {"", L""},
      {"film", L"film"},
      {"\x7F", L"\x7F"},
      {"\xC2\x80", L"\x80"},
      {"\xDF\xBF", L"\x7FF"},
      {"\xE0\xA0\x80", L"\x800"},
      {"\xEF\xBF\xBF", L"\xFFFF"},
      {"\xF0\x90\x80\x80", L"\x10000"},
      {"\xF4\x8F\xBF\xBF", L"\x10FFFF"},
      {"\xED\x9F\xBF\xEE\x80\x80", L"\xD7FF\xE000"},
      {"\xF0\x9F\x8E\xAC \xC3\xA9t\xC3\xA9", L"\x1F3AC \xE9t\xE9"},
      {"\xEF\xBB\xBF"
       "mark",
       L"\xFEFFmark"},
      {"a\0b"s, L"a\0b"s},
  };
}

struct Wide {
  int count;
  std::wstring text;
  bool error;
};

Wide widen(const std::string& bytes, std::size_t capacity = 100) {
  std::array<wchar_t, 100> target{};
  bool error = false;
  const int count = kvpm::UTF8ToWchart(bytes.data(), bytes.size(), target.data(), capacity, &error);
  return {count, std::wstring(target.data(), count < 0 ? 0 : static_cast<std::size_t>(count)),
          error};
}

struct Narrow {
  int count;
  std::string text;
};

Narrow narrow(const std::wstring& text, std::size_t capacity = 100, bool final = false) {
  std::string target(100, '#');
  const int count = kvpm::WchartToUTF8(text.data(), text.size(), target.data(), capacity, final);
  return {count, target.substr(0, count < 0 ? 0 : static_cast<std::size_t>(count))};
}

TEST(Unicode, WidensWellFormedText) {
  for (const Case& row : wellFormed()) {
    const Wide result = widen(row.narrow);
    EXPECT_EQ(result.text, row.wide) << row.narrow;
    EXPECT_FALSE(result.error) << row.narrow;
  }
}

TEST(Unicode, NarrowsWellFormedText) {
  for (const Case& row : wellFormed()) EXPECT_EQ(narrow(row.wide).text, row.narrow);
}

TEST(Unicode, EachMalformedByteBecomesAReplacement) {
  const std::vector<Case> rows = {
      {"\x80", L"\xFFFD"},
      {"a\xFFz", L"a\xFFFDz"},
      {"\xC0\xAF", L"\xFFFD\xFFFD"},                      // longer than necessary
      {"\xE2\x82", L"\xFFFD\xFFFD"},                      // cut off
      {"\xE2\x82z", L"\xFFFD\xFFFDz"},                    // broken off
      {"\xED\xA0\x80", L"\xFFFD\xFFFD\xFFFD"},            // a surrogate
      {"\xF4\x90\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD"},  // above the last character
      {"\xC3\xA9\xC3", L"\xE9\xFFFD"},
  };
  for (const Case& row : rows) {
    const Wide result = widen(row.narrow);
    EXPECT_EQ(result.text, row.wide);
    EXPECT_TRUE(result.error);
  }
}

TEST(Unicode, TheErrorFlagMayBeNull) {
  wchar_t target = 0;
  EXPECT_EQ(kvpm::UTF8ToWchart("\xFF", 1, &target, 1, nullptr), 1);
  EXPECT_EQ(target, L'\xFFFD');
}

TEST(Unicode, WhatCannotBeNarrowedBecomesAReplacement) {
  const std::string replacement = "\xEF\xBF\xBD";
  EXPECT_EQ(narrow({wchar_t(0xD800)}).text, replacement);
  EXPECT_EQ(narrow({wchar_t(0xDFFF)}).text, replacement);
  EXPECT_EQ(narrow({wchar_t(0xD83C), wchar_t(0xDFAC)}).text, replacement + replacement);
  EXPECT_EQ(narrow({wchar_t(0x110000)}).text, replacement);
  EXPECT_EQ(narrow({wchar_t(-1), L'z'}).text, replacement + "z");
}

TEST(Unicode, ExactlyTheCapacityIsEnough) {
  EXPECT_EQ(widen("\xC3\xA9tz", 3).text, L"\xE9tz");
  EXPECT_EQ(narrow(L"\xE9tz", 4).text, "\xC3\xA9tz");
  EXPECT_EQ(widen("", 0).count, 0);
  EXPECT_EQ(narrow(L"", 0).count, 0);
}

TEST(Unicode, WhatDoesNotFitIsRefused) {
  EXPECT_EQ(widen("abc", 2).count, -1);
  EXPECT_EQ(narrow(L"abc", 2).count, -1);
  EXPECT_EQ(narrow(L"\xE9", 1).count, -1);
}

TEST(Unicode, NothingIsWrittenAfterTheText) {
  wchar_t wide[] = {L'#', L'#'};
  EXPECT_EQ(kvpm::UTF8ToWchart("a", 1, wide, 2, nullptr), 1);
  EXPECT_EQ(wide[1], L'#');
  char bytes[] = {'#', '#'};
  EXPECT_EQ(kvpm::WchartToUTF8(L"a", 1, bytes, 2, false), 1);
  EXPECT_EQ(bytes[1], '#');
}

TEST(Unicode, AFinalTextEndsWithANul) {
  char bytes[] = {'#', '#', '#'};
  EXPECT_EQ(kvpm::WchartToUTF8(L"ab", 2, bytes, 3, true), 2);
  EXPECT_EQ(std::string(bytes), "ab");
}

TEST(Unicode, TheNulNeedsCapacityToo) {
  EXPECT_EQ(narrow(L"ab", 2, true).count, -1);
  EXPECT_EQ(narrow(L"", 0, true).count, -1);
  EXPECT_EQ(narrow(L"", 1, true).count, 0);
}

TEST(TrimmedText, HasNoBlankAtEitherEnd) {
  for (const char* text : {"a b", " a b", "a b\n", " \t\r\n\f\va b \t\r\n\f\v"}) {
    EXPECT_EQ(playerx::trimmed(text), "a b") << text;
  }
  for (const char* text : {"", " ", "\t\n"}) EXPECT_EQ(playerx::trimmed(text), "");
}

}  // namespace
