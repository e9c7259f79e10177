#include <gtest/gtest.h>

#include "playerx/transfers/ContentRange.h"

namespace playerx::transfers {
namespace {

using Bytes = ContentRange::Bytes;

TEST(ContentRangeTest, ReadsRangeAndTotal) {
  EXPECT_EQ(parseContentRange("bytes 10-19/100"), (ContentRange{Bytes{10, 19}, 100}));
  EXPECT_EQ(parseContentRange("bytes 0-0/1"), (ContentRange{Bytes{0, 0}, 1}));
  EXPECT_EQ(parseContentRange("  BYTES  10-19/100\r\n"), (ContentRange{Bytes{10, 19}, 100}));
}

TEST(ContentRangeTest, ATotalThatIsNotToldIsNone) {
  EXPECT_EQ(parseContentRange("bytes 10-19/*"), (ContentRange{Bytes{10, 19}, std::nullopt}));
}

TEST(ContentRangeTest, ARangeThatDoesNotExistIsNone) {
  EXPECT_EQ(parseContentRange("bytes */100"), (ContentRange{std::nullopt, 100}));
}

TEST(ContentRangeTest, TheLargestNumbersFit) {
  EXPECT_EQ(parseContentRange("bytes 0-18446744073709551614/18446744073709551615"),
            (ContentRange{Bytes{0, UINT64_MAX - 1}, UINT64_MAX}));
}

class NoContentRangeTest : public ::testing::TestWithParam<const char*> {};

TEST_P(NoContentRangeTest, IsRefused) { EXPECT_FALSE(parseContentRange(GetParam())); }

INSTANTIATE_TEST_SUITE_P(All, NoContentRangeTest,
                         ::testing::Values("", "bytes", "bytes ", "bytes 1", "bytes 1-2",
                                           "bytes 2-1/10", "bytes 1-2/", "bytes /10", "bytes -/10",
                                           "bytes -2/10", "bytes 1-/10", "bytes 5-10/10",
                                           "bytes 1-2/2", "bytes 1-2/x", "bytes 1-2/10x",
                                           "bytes x-2/10", "bytes */*", "bytes +1-2/10",
                                           "bytes 1 -2/10", "bytes -1-2/10", "items 1-2/10",
                                           "bytes1-2/10", "bytes 1-18446744073709551616/*",
                                           "bytes 0-1/18446744073709551616"));

TEST(ParseNumberTest, TakesDigitsAndNothingElse) {
  EXPECT_EQ(parseNumber("0"), 0u);
  EXPECT_EQ(parseNumber("18446744073709551615"), UINT64_MAX);
  for (const char* text : {"", " ", "-1", "+1", "1 ", " 1", "0x1", "1.0", "18446744073709551616"}) {
    EXPECT_FALSE(parseNumber(text)) << text;
  }
}

}  // namespace
}  // namespace playerx::transfers
