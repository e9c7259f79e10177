#include <gtest/gtest.h>

#include "playerx/cli/TerminalText.h"

namespace playerx::cli {
namespace {

TEST(TerminalTextTest, AddressesInASentenceLoseUserAndPassword) {
  EXPECT_EQ(withoutPasswords("\"http://u:p@h/a.avi\" and ftp://u@h is a b@c."),
            "\"http://h/a.avi\" and ftp://h is a b@c.");
  EXPECT_EQ(withoutPasswords("\"http://u:p/q@h/a.avi\" is wrong"), "\"...@h/a.avi\" is wrong");
  EXPECT_EQ(withoutPasswords("http://h/@u/a.avi, mail a@b"), "http://h/@u/a.avi, mail a@b");
  EXPECT_EQ(withoutPasswords("http://u:p@h\tx "), "http://h\tx ");
  EXPECT_EQ(withoutPasswords("://"), "://");
  const std::string longest = "http://" + std::string(1'000'000, 'a');
  EXPECT_EQ(withoutPasswords(longest), longest);
}

TEST(TerminalTextTest, WhatIsQuotedShowsNoPasswordEither) {
  EXPECT_EQ(quoted("1\x1b"), "\"1?\"");
  EXPECT_EQ(quoted("http://u:pa \"ss@h/a.avi"), "\"http://h/a.avi\"");
}

TEST(TerminalTextTest, TheBarFillsWithThePercentage) {
  EXPECT_EQ(progressBar(0, 12), "[          ]");
  EXPECT_EQ(progressBar(55, 12), "[#####     ]");
  EXPECT_EQ(progressBar(100, 12), "[##########]");
  EXPECT_EQ(progressBar(-5, 4), "[  ]");
  EXPECT_EQ(progressBar(400, 4), "[##]");
}

TEST(TerminalTextTest, ControlCharactersCannotReachTheTerminal) {
  EXPECT_EQ(printable("a\033[2Jb\rc\x7f"), "a?[2Jb?c?");
  EXPECT_EQ(printable("a\xC2\x9B"
                      "b"),
            "a?b");
  EXPECT_EQ(printable("Zürich – 東京"), "Zürich – 東京");
}

TEST(TerminalTextTest, MarksThatTurnTheDirectionCannotReachTheTerminal) {
  EXPECT_EQ(printable("a\u202Eiva.b\u2066c\u2069"), "a?iva.b?c?");
  EXPECT_EQ(printable("\u202F\u2065\u206A"), "\u202F\u2065\u206A");
}

TEST(TerminalTextTest, WhatBreaksLinesOrIsNoTextCannotReachTheTerminal) {
  EXPECT_EQ(printable("a\u2028b\u2029c"), "a?b?c");
  EXPECT_EQ(printable("a\xFF"
                      "b\xC3"),
            "a?b?");
}

TEST(TerminalTextTest, WideCharactersTakeTwoColumnsWhileMarksTakeNone) {
  EXPECT_EQ(columnsOf("Zürich"), 6u);
  EXPECT_EQ(columnsOf("東京"), 4u);
  EXPECT_EQ(columnsOf("e\u0301"), 1u);
  EXPECT_EQ(columnsOf("🎬"), 2u);
  EXPECT_EQ(columnsOf("שלום"), 4u);
}

TEST(TerminalTextTest, CuttingKeepsCharactersWhole) {
  EXPECT_EQ(cutTo("東京都", 6), "東京都");
  EXPECT_EQ(cutTo("東京都", 5), "東京…");
  EXPECT_EQ(cutTo("東京都", 4), "東…");
  EXPECT_EQ(cutTo("e\u0301e\u0301e\u0301", 2), "e\u0301…");
  EXPECT_EQ(cutTo("abc", 0), "");
  for (std::size_t columns = 0; columns < 12; ++columns) {
    EXPECT_LE(columnsOf(cutTo("a東\u0301b👩‍👩‍👧c🎬d", columns)), columns);
  }
}

TEST(TerminalTextTest, CuttingCountsCharactersNotBytes) {
  EXPECT_EQ(cutTo("Zürich", 6), "Zürich");
  EXPECT_EQ(cutTo("Zürich", 3), "Zü…");
  EXPECT_EQ(cutTo("", 3), "");
}

}  // namespace
}  // namespace playerx::cli
