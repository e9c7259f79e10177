#include <gtest/gtest.h>

#include "playerx/app/model/TextFormat.h"

namespace playerx {
namespace {

TEST(TextFormatTest, BytesHaveUnitsOfAThousand) {
  EXPECT_EQ(formatBytes(0), "0 B");
  EXPECT_EQ(formatBytes(999), "999 B");
  EXPECT_EQ(formatBytes(1000), "1.0 kB");
  EXPECT_EQ(formatBytes(999'949), "999.9 kB");
  EXPECT_EQ(formatBytes(999'950), "1.0 MB");
  EXPECT_EQ(formatBytes(1'500'000'000), "1.5 GB");
  EXPECT_EQ(formatBytes(~std::uint64_t{0}), "18.4 EB");
}

TEST(TextFormatTest, DurationsNameTheirTwoLargestUnits) {
  EXPECT_EQ(formatDuration(0), "");
  EXPECT_EQ(formatDuration(5), "5 s");
  EXPECT_EQ(formatDuration(123), "2 min 03 s");
  EXPECT_EQ(formatDuration(4020), "1 h 07 min");
  EXPECT_EQ(formatDuration(4294967295), "1193046 h 28 min");
}

TEST(TextFormatTest, TheBarFillsWithThePercentage) {
  EXPECT_EQ(progressBar(0, 12), "[          ]");
  EXPECT_EQ(progressBar(55, 12), "[#####     ]");
  EXPECT_EQ(progressBar(100, 12), "[##########]");
  EXPECT_EQ(progressBar(-5, 4), "[  ]");
  EXPECT_EQ(progressBar(400, 4), "[##]");
}

TEST(TextFormatTest, ControlCharactersCannotReachTheTerminal) {
  EXPECT_EQ(printable("a\033[2Jb\rc\x7f"), "a?[2Jb?c?");
  EXPECT_EQ(printable("a\xC2\x9B"
                      "b"),
            "a?b");
  EXPECT_EQ(printable("Zürich – 東京"), "Zürich – 東京");
}

TEST(TextFormatTest, MarksThatTurnTheDirectionCannotReachTheTerminal) {
  EXPECT_EQ(printable("a\u202Eiva.b\u2066c\u2069"), "a?iva.b?c?");
  EXPECT_EQ(printable("\u2029\u202F\u2065\u206A"), "\u2029\u202F\u2065\u206A");
}

TEST(TextFormatTest, CuttingCountsCharactersNotBytes) {
  EXPECT_EQ(cutTo("Zürich", 6), "Zürich");
  EXPECT_EQ(cutTo("Zürich", 3), "Zü…");
  EXPECT_EQ(cutTo("", 3), "");
}

}  // namespace
}  // namespace playerx
