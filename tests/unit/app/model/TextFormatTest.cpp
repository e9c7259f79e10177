#include <gtest/gtest.h>

#include "playerx/app/model/TextFormat.h"

namespace playerx::model {
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

TEST(TextFormatTest, AmountsThatLookAlikeAreToldInBytes) {
  using Texts = std::pair<std::string, std::string>;
  EXPECT_EQ(formatApart(1'000'000, 1'100'000), Texts("1.0 MB", "1.1 MB"));
  EXPECT_EQ(formatApart(1'000'001, 999'999), Texts("1000001 B", "999999 B"));
}

TEST(TextFormatTest, ACountIsInTheRightNumber) {
  EXPECT_EQ(formatCount(0, "film"), "0 films");
  EXPECT_EQ(formatCount(1, "film"), "one film");
  EXPECT_EQ(formatCount(12, "item"), "12 items");
}

TEST(TextFormatTest, DurationsNameTheirTwoLargestUnits) {
  EXPECT_EQ(formatDuration(0), "");
  EXPECT_EQ(formatDuration(5), "5 s");
  EXPECT_EQ(formatDuration(123), "2 min 03 s");
  EXPECT_EQ(formatDuration(4020), "1 h 07 min");
  EXPECT_EQ(formatDuration(4294967295), "1193046 h 28 min");
}

}  // namespace
}  // namespace playerx::model
