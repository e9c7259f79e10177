#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "persistence/EditedText.h"

namespace persistence {
namespace {

std::string letters(std::size_t count, std::minstd_rand& random) {
  std::string text(count, ' ');
  for (char& c : text) c = static_cast<char>('a' + random() % 26);
  return text;
}

/// Changes parts of a text, and of a string in the same way, and compares them.
void expectEditedLikeAString(std::size_t size, int edits) {
  std::minstd_rand random(1);
  std::string string = letters(size, random);
  EditedText text;
  text = string;
  for (int edit = 0; edit < edits; ++edit) {
    const bool isNearAnEnd = random() % 4 != 0;
    std::size_t begin = random() % (string.size() + 1);
    if (isNearAnEnd) begin = random() % 2 == 0 ? begin % 100 : string.size() - begin % 100;
    const std::size_t length = std::min<std::size_t>(string.size() - begin, random() % 500);
    const std::string part = letters(random() % 500, random);
    string.replace(begin, length, part);
    text.replace(begin, length, part);
    ASSERT_EQ(text.size(), string.size()) << "edit " << edit;
    ASSERT_TRUE(text.view() == string) << "edit " << edit;
  }
}

TEST(EditedText, IsEmptyAtFirst) {
  EditedText text;
  EXPECT_EQ(text.view(), "");
  text.replace(0, 0, "text");
  EXPECT_EQ(text.view(), "text");
}

TEST(EditedText, AShortTextIsEditedLikeAString) { expectEditedLikeAString(1'000, 3'000); }

TEST(EditedText, ALongTextIsEditedLikeAString) { expectEditedLikeAString(1'000'000, 1'000); }

TEST(EditedText, ATextThatGrowsAtItsBeginningIsEditedLikeAString) {
  std::minstd_rand random(1);
  std::string string = letters(400'000, random);
  EditedText text;
  text = string;
  for (const std::size_t length : {1'000U, 60'000U, 70'000U, 1U, 200'000U, 400U}) {
    const std::string part = letters(length, random);
    string.insert(10, part);
    text.replace(10, 0, part);
    ASSERT_TRUE(text.view() == string) << length;
  }
}

TEST(EditedText, ATextThatShrinksAtItsBeginningTakesNoMoreThanTwiceItsSize) {
  std::minstd_rand random(1);
  std::string string = letters(4'000'000, random);
  EditedText text;
  text = string;
  while (string.size() > 300'000) {
    string.erase(5, 1'000);
    text.replace(5, 1'000, "");
  }
  EXPECT_TRUE(text.view() == string);
  text = std::string("another");
  EXPECT_EQ(text.view(), "another");
}

TEST(EditedText, AChangeNearTheBeginningOfALongTextLeavesTheRestInItsPlace) {
  EditedText text;
  text = std::string(1'000'000, 'a');
  text.replace(10, 0, "room is made");
  const char* const end = text.view().data() + text.size();
  text.replace(20, 3, "a longer part");
  text.replace(30, 9, "shorter");
  EXPECT_EQ(text.view().data() + text.size(), end);
}

}  // namespace
}  // namespace persistence
