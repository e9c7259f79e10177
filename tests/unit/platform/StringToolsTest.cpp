#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "kvpm/StringTools.h"

namespace {

using kvpm::StringTools;
using namespace std::string_literals;

std::basic_string<unsigned char> bytes(const std::string& text) {
  return {text.begin(), text.end()};
}

TEST(StringTools, StripsTheWholeRunAtBothEnds) {
  struct Case {
    std::wstring text;
    wchar_t character;
    std::wstring result;
  };
  const std::vector<Case> rows = {
      {L"\"film.tix\"", L'"', L"film.tix"},
      {L"\"\"\"a\"b\"\"", L'"', L"a\"b"},
      {L"  a", L' ', L"a"},
      {L"a  ", L' ', L"a"},
      {L"\t a \t", L'\t', L" a "},
      {L"none", L'"', L"none"},
      {L"\"\"\"", L'"', L""},
      {L"", L'"', L""},
      {L"\x1F3AC"
       L"a\x1F3AC",
       L'\x1F3AC', L"a"},
      {std::wstring(L"\0a\0", 3), L'\0', L"a"},
  };
  for (const Case& row : rows) {
    EXPECT_EQ(StringTools::stripBeginingAndEndChar(row.text, row.character), row.result);
  }
}

TEST(StringTools, LowersCharacterByCharacter) {
  EXPECT_EQ(StringTools::toLower(L".AvI"), L".avi");
  EXPECT_EQ(StringTools::toLower(L"\xC9T\xC9 \x0416 \x10400"), L"\xE9t\xE9 \x0436 \x10428");
  EXPECT_EQ(StringTools::toLower(L"\x1E9E"), L"\xDF");
  EXPECT_EQ(StringTools::toLower(L""), L"");
  EXPECT_EQ(StringTools::toLower(L"I"), L"i");
}

TEST(StringTools, LoweringLeavesInvalidCharacters) {
  const std::wstring odd = {wchar_t(0x110000), wchar_t(-1), wchar_t(0xD800)};
  EXPECT_EQ(StringTools::toLower(odd), odd);
}

TEST(StringTools, ReplacesFromTheLeftWithoutOverlap) {
  struct Case {
    std::wstring search;
    std::wstring replacement;
    std::wstring subject;
    std::wstring result;
  };
  const std::vector<Case> rows = {
      {L"/", L"_", L"a/b/c", L"a_b_c"},    {L"aa", L"b", L"aaaaa", L"bba"},
      {L"a", L"aa", L"aba", L"aabaa"},  // what was put in is not searched
      {L"x", L"", L"xaxbx", L"ab"},        {L"none", L"b", L"subject", L"subject"},
      {L"", L"b", L"subject", L"subject"}, {L"a", L"b", L"", L""},
      {L"whole", L"", L"whole", L""},
  };
  for (const Case& row : rows) {
    EXPECT_EQ(StringTools::replaceString(row.search, row.replacement, row.subject), row.result);
  }
}

TEST(StringTools, NumbersBecomeDecimalTexts) {
  EXPECT_EQ(StringTools::int32ToString(0), "0");
  EXPECT_EQ(StringTools::int32ToString(std::numeric_limits<std::int32_t>::min()), "-2147483648");
  EXPECT_EQ(StringTools::int32ToString(std::numeric_limits<std::int32_t>::max()), "2147483647");
  EXPECT_EQ(StringTools::uint64ToString(0), "0");
  EXPECT_EQ(StringTools::uint64ToString(std::numeric_limits<std::uint64_t>::max()),
            "18446744073709551615");
}

TEST(StringTools, ReadsTheNumberAtTheBeginning) {
  struct Case {
    std::string text;
    std::int32_t narrow;
    std::uint64_t wide;
  };
  constexpr auto kAll = std::numeric_limits<std::uint64_t>::max();
  const std::vector<Case> rows = {
      {"0", 0, 0},
      {"42", 42, 42},
      {"-1", -1, kAll},
      {"+7", 7, 7},
      {" \t\r\n\v\f12", 12, 12},
      {"007", 7, 7},
      {"12 monkeys", 12, 12},
      {"1.9", 1, 1},
      {"", 0, 0},
      {"-", 0, 0},
      {"+-3", 0, 0},
      {"- 3", 0, 0},
      {"many", 0, 0},
      {"0x10", 0, 0},
      {"5\0"s
       "6",
       5, 5},
      {"2147483648", std::numeric_limits<std::int32_t>::min(), 2147483648U},
      {"4294967296", 0, 4294967296U},
      {"18446744073709551615", -1, kAll},
      {"18446744073709551616", 0, 0},
      {"-18446744073709551615", 1, 1},
      {"99999999999999999999", 1661992959, 7766279631452241919U},
  };
  for (const Case& row : rows) {
    EXPECT_EQ(StringTools::stringToInt32(row.text), row.narrow) << row.text;
    EXPECT_EQ(StringTools::stringToUint64(row.text), row.wide) << row.text;
  }
}

TEST(StringTools, ReadsBackTheNumbersItWrites) {
  for (const std::int32_t value : {0, 1, -1, std::numeric_limits<std::int32_t>::min()}) {
    EXPECT_EQ(StringTools::stringToInt32(StringTools::int32ToString(value)), value);
  }
  for (const std::uint64_t value : {std::uint64_t{0}, std::uint64_t{1} << 63U, ~std::uint64_t{0}}) {
    EXPECT_EQ(StringTools::stringToUint64(StringTools::uint64ToString(value)), value);
  }
}

TEST(StringTools, WritesTwoTextsForTruth) {
  EXPECT_EQ(StringTools::boolToString(true), "true");
  EXPECT_EQ(StringTools::boolToString(false), "false");
}

TEST(StringTools, ReadsTruth) {
  for (const char* text : {"true", "TRUE", "True", "tRuE", "1"}) {
    EXPECT_TRUE(StringTools::stringToBool(text)) << text;
  }
  const std::vector<std::string> others = {"false", "0",  "",      "2",     "yes",
                                           " true", "11", "true ", "truth", "true\0"s};
  for (const std::string& text : others) EXPECT_FALSE(StringTools::stringToBool(text)) << text;
}

struct FloatCase {
  std::wstring text;
  float value;
};

std::vector<FloatCase> floats() {
  return {
      {L"1", 1.0F},     {L"1.0", 1.0F},   {L"  1.0\t", 1.0F}, {L"+1", 1.0F},
      {L"-2.5", -2.5F}, {L"1e2", 100.0F}, {L".5", 0.5F},      {L"1.", 1.0F},
      {L"1,0", 0.0F},   {L"1,000", 0.0F}, {L"1.0x", 0.0F},    {L"x1", 0.0F},
      {L"1 0", 0.0F},   {L"", 0.0F},      {L"   ", 0.0F},     {L"nan", 0.0F},
      {L"inf", 0.0F},   {L"-inf", 0.0F},  {L"1e400", 0.0F},   {std::wstring(L"1\0", 2), 0.0F},
      {L"0x1", 0.0F},   {L"1.0.0", 0.0F},
  };
}

TEST(StringTools, ReadsANumberWithAPoint) {
  for (const FloatCase& row : floats()) {
    EXPECT_EQ(StringTools::wstringToFloat(row.text), row.value)
        << StringTools::wStringToString(row.text);
  }
}

TEST(StringTools, NumbersDoNotDependOnTheLocale) {
  // Only the C locale is sure to be there; where a locale with a comma is, it is used.
  const std::string before = std::setlocale(LC_ALL, nullptr);
  std::setlocale(LC_ALL, "de_DE.UTF-8");
  EXPECT_EQ(StringTools::wstringToFloat(L"1.5"), 1.5F);
  EXPECT_EQ(StringTools::wstringToFloat(L"1,5"), 0.0F);
  std::setlocale(LC_ALL, before.c_str());
}

TEST(StringTools, TheTextOfAFileIsUtf8) {
  EXPECT_EQ(StringTools::uStringToWstring(bytes("\xC3\xA9t\xC3\xA9")), L"\xE9t\xE9");
  EXPECT_EQ(StringTools::uStringToWstring(bytes("a\xFFz")), L"a\xFFFDz");
  EXPECT_EQ(StringTools::uStringToWstring({}), L"");
}

TEST(StringTools, ALeadingByteOrderMarkIsSkippedOnce) {
  EXPECT_EQ(StringTools::uStringToWstring(bytes("\xEF\xBB\xBFTix")), L"Tix");
  EXPECT_EQ(StringTools::uStringToWstring(bytes("\xEF\xBB\xBF")), L"");
  EXPECT_EQ(StringTools::uStringToWstring(bytes("\xEF\xBB\xBF\xEF\xBB\xBF")), L"\xFEFF");
  EXPECT_EQ(StringTools::uStringToWstring(bytes("a\xEF\xBB\xBF")), L"a\xFEFF");
}

TEST(StringTools, TheTextOfAFileEndsAtTheFirstNul) {
  EXPECT_EQ(StringTools::uStringToWstring(bytes("ab\0cd"s)), L"ab");
  EXPECT_EQ(StringTools::uStringToWstring(bytes("\0"s)), L"");
}

TEST(StringTools, NarrowAndWideTextConvertIntoEachOther) {
  EXPECT_EQ(StringTools::wStringToString(L"\x1F3AC"), "\xF0\x9F\x8E\xAC");
  EXPECT_EQ(StringTools::stringToWString("\xF0\x9F\x8E\xAC"), L"\x1F3AC");
  EXPECT_EQ(StringTools::wStringToString(std::wstring(L"a\0b", 3)), "a\0b"s);
  EXPECT_EQ(StringTools::stringToWString("a\0b"s), std::wstring(L"a\0b", 3));
  EXPECT_EQ(StringTools::stringToWString("\xEF\xBB\xBFx"), L"\xFEFFx");
  EXPECT_EQ(StringTools::wStringToString(L"\xFEFFx"), "\xEF\xBB\xBFx");
}

TEST(StringTools, WhatCannotBeConvertedIsReplaced) {
  EXPECT_EQ(StringTools::wStringToString({wchar_t(0xD800)}), "\xEF\xBF\xBD");
  EXPECT_EQ(StringTools::stringToWString("\xFF"), L"\xFFFD");
}

}  // namespace
