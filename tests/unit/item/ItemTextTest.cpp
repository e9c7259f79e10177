#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "item/ItemText.h"

namespace {

const std::vector<std::wstring>& texts() {
  static const std::vector<std::wstring> all = {
      L"",
      L"a.avi",
      std::wstring(1'000, L'a'),
      std::wstring(L"a\0b", 3),
      L"\x7F",
      L"\x80",
      L"caf\u00E9",
      L"\U0001F600",
      {static_cast<wchar_t>(-1)},
      {static_cast<wchar_t>(0xD800)},
  };
  return all;
}

TEST(ItemText, IsEmptyAtFirst) {
  const ItemText text;
  EXPECT_EQ(text.ascii(), "");
  EXPECT_EQ(text.wide(), L"");
}

TEST(ItemText, KeepsEveryTextAsItIs) {
  for (const std::wstring& first : texts()) {
    for (const std::wstring& second : texts()) {
      for (const bool isAsked : {false, true}) {
        ItemText text;
        text = first;
        if (isAsked) {
          EXPECT_EQ(text.wide(), first);
        }
        text = second;
        EXPECT_EQ(text == first, first == second);
        EXPECT_TRUE(text == second);
        EXPECT_EQ(text.wide(), second);
        EXPECT_TRUE(text == second);
      }
    }
  }
}

TEST(ItemText, IsAsciiInOneByteForEachCharacter) {
  ItemText text;
  text = std::wstring(L"a\0\x7F", 3);
  EXPECT_EQ(text.ascii(), std::string_view("a\0\x7F", 3));
  text = L"\x80";
  EXPECT_FALSE(text.ascii());
}

TEST(ItemText, WideTextIsTheSameObjectWhateverIsAssigned) {
  ItemText text;
  text = L"one";
  const std::wstring& wide = text.wide();
  for (const std::wstring& other : texts()) {
    text = other;
    EXPECT_EQ(wide, other);
    EXPECT_EQ(&text.wide(), &wide);
  }
  text = text.wide();
  EXPECT_EQ(wide, texts().back());
}

TEST(ItemText, ACopyIsTheSameTextByItself) {
  for (const std::wstring& first : texts()) {
    ItemText text, copy;
    copy = L"caf\u00E9";
    text = first;
    copy = text;
    EXPECT_TRUE(copy == first);
    ItemText other;
    other = copy;
    copy = L"another";
    copy = *&copy;
    EXPECT_TRUE(other == first && text == first && copy == L"another");
  }
}

TEST(ItemText, EqualTextsHaveTheSameHash) {
  for (const std::wstring& each : texts()) {
    ItemText text, asked;
    text = each;
    asked = L"a";
    EXPECT_EQ(asked.wide(), L"a");
    asked = each;
    EXPECT_EQ(text.hash(), ItemText::hashOf(each));
    EXPECT_EQ(asked.hash(), ItemText::hashOf(each));
  }
}

TEST(ItemText, SeveralThreadsMayAskAtOnce) {
  for (int round = 0; round < 50; ++round) {
    ItemText text;
    text = L"http://films.example/a.avi";
    const std::wstring* seen = nullptr;
    std::thread other([&] { seen = &text.wide(); });
    const std::wstring& own = text.wide();
    other.join();
    EXPECT_EQ(&own, seen);
    EXPECT_EQ(own, L"http://films.example/a.avi");
  }
}

}  // namespace
