#include <gtest/gtest.h>

#include "playerx/cli/TerminalText.h"

namespace playerx::cli {
namespace {

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
  EXPECT_EQ(printable("\u2029\u202F\u2065\u206A"), "\u2029\u202F\u2065\u206A");
}

TEST(TerminalTextTest, CuttingCountsCharactersNotBytes) {
  EXPECT_EQ(cutTo("Zürich", 6), "Zürich");
  EXPECT_EQ(cutTo("Zürich", 3), "Zü…");
  EXPECT_EQ(cutTo("", 3), "");
}

}  // namespace
}  // namespace playerx::cli
