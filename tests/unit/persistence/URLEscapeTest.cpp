#include <gmock/gmock.h>

#include <map>
#include <string>

#include "persistence/URLEscape.h"

namespace {

const std::map<char, std::string> kWritten{{' ', "%20"}, {'<', "%3C"}, {'>', "%3E"},  {'#', "%23"},
                                           {'{', "%7B"}, {'}', "%7D"}, {'\\', "%7C"}, {'|', "%5C"},
                                           {'^', "%5E"}, {'~', "%7E"}};

const std::map<std::string, char> kRead{{"%20", ' '}, {"%3C", '<'}, {"%3E", '>'},  {"%23", '#'},
                                        {"%7B", '{'}, {"%7D", '}'}, {"%5C", '\\'}, {"%7C", '|'},
                                        {"%5E", '^'}, {"%7E", '~'}};

std::string everyByte() {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  return bytes;
}

TEST(URLEscape, EscapesTheTenCharactersOnly) {
  for (const char byte : everyByte()) {
    const auto written = kWritten.find(byte);
    const std::string expected = written == kWritten.end() ? std::string(1, byte) : written->second;
    EXPECT_EQ(URLEscape::escape(std::string(1, byte)), expected) << static_cast<int>(byte);
  }
}

/// A text, what becomes of it, and what that shows.
struct Row {
  const char* text;
  const char* result;
  const char* what;
};

TEST(URLEscape, EscapesOnce) {
  const Row rows[] = {
      {"", "", "nothing"},
      {"%\"`[]", "%\"`[]", "percent, quote, backquote, brackets stay"},
      {"%20", "%20", "the percent of a code stays"},
      {"a b|c\\d", "a%20b%5Cc%7Cd", "backslash, bar crossed as wanted"},
  };
  for (const Row& row : rows) EXPECT_EQ(URLEscape::escape(row.text), row.result) << row.what;
}

TEST(URLEscape, UnescapesOnce) {
  const Row rows[] = {
      {"", "", "nothing"},
      {"a%20b%5Cc%7Cd", "a b\\c|d", "backslash, bar not crossed"},
      {"%41", "%41", "an unknown code"},
      {"%3c", "%3c", "a code in lower case"},
      {"100%", "100%", "a percent at the end"},
      {"%2", "%2", "half a code"},
      {"%", "%", "a percent alone"},
      {"%%20", "% ", "a code right after a percent that stays"},
      {"%2%20x", "%2 x", "a code right after half a code"},
      {"%%%", "%%%", "percents alone"},
      {"%2%3220", "%2%3220", "an unknown code in the middle of a known one"},
      {"%23%20", "# ", "two codes"},
      {"%2320", "#20", "its own output is not decoded"},
  };
  for (const Row& row : rows) EXPECT_EQ(URLEscape::unescape(row.text), row.result) << row.what;
}

TEST(URLEscape, SwapsBackslashAndBarOnARoundTripAsWanted) {
  EXPECT_EQ(URLEscape::unescape(URLEscape::escape("|\\")), "\\|");
}

TEST(URLEscape, KeepsAnyOtherTextOnARoundTrip) {
  std::string text = everyByte();
  text.erase(text.find('|'), 1);
  text.erase(text.find('\\'), 1);
  EXPECT_EQ(URLEscape::unescape(URLEscape::escape(text)), text);
}

TEST(URLEscape, UnescapesTheTenCodesOnly) {
  const std::string digits = everyByte();
  for (const char high : digits) {
    for (const char low : digits) {
      const std::string text{'%', high, low};
      const auto read = kRead.find(text);
      const std::string expected = read == kRead.end() ? text : std::string(1, read->second);
      ASSERT_EQ(URLEscape::unescape(text), expected) << text;
    }
  }
}

TEST(URLEscape, WorksThroughLongTexts) {
  std::string spaces(1'000'000, ' ');
  std::string escapes;
  for (std::size_t i = 0; i < spaces.size(); ++i) escapes += "%20";
  EXPECT_EQ(URLEscape::escape(spaces), escapes);
  EXPECT_EQ(URLEscape::unescape(escapes), spaces);
  const std::string percents(1'000'000, '%');
  EXPECT_EQ(URLEscape::unescape(percents), percents);
}

}  // namespace
