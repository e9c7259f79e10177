#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "plugin/ConfirmedBytes.h"

namespace plugin {
namespace {

struct Case {
  const char* says;
  ProgressOfTicket progress;  ///< ticket id, size, previous percent, percent
  std::optional<std::uint64_t> bytes;
};

constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();

const std::vector<Case> kCases = {
    {"the first report confirms its share", {7, 1000, 0, 50}, 500},
    {"the last report confirms all", {7, 1000, 50, 100}, 1000},
    {"a report in between confirms nothing", {7, 1000, 50, 51}, std::nullopt},
    {"a report of 0 confirms nothing", {7, 1000, 0, 0}, std::nullopt},
    {"1 percent is enough", {7, 1000, 0, 1}, 10},
    {"a second report of 100 confirms nothing", {7, 1000, 100, 100}, std::nullopt},
    {"the first report may be that of 100", {7, 1000, 0, 100}, 1000},
    {"a previous percent below 0 counts as none", {7, 1000, -1, 3}, 30},
    {"a fall from 100 to 99 confirms nothing", {7, 1000, 100, 99}, std::nullopt},
    {"no ticket, no confirmation", {0, 1000, 0, 50}, std::nullopt},
    {"a negative ticket id is none", {-7, 1000, 0, 50}, std::nullopt},
    {"nothing is confirmed of an unknown size", {7, 0, 0, 50}, std::nullopt},
    {"parts of a byte are cut off", {7, 101, 0, 50}, 50},
    {"the share has single precision", {7, 16777217, 0, 100}, 16777216},
    {"the share is not computed in double precision", {7, 1000000007, 0, 33}, 330000000},
    {"the percent is divided first", {7, 1000000, 0, 13}, 129999},
    {"the quotient is rounded before it is multiplied", {7, 700, 0, 53}, 370},
    {"all bytes are exact", {7, 16777217, 1, 100}, 16777217},
    {"the greatest size", {7, kMost, 0, 100}, kMost},
    {"half of the greatest size", {7, kMost, 0, 50}, 1ULL << 63},
    {"more than there is", {7, kMost, 0, 150}, kMost},
};

TEST(ConfirmedBytes, FollowFromTwoReportsInARow) {
  for (const Case& one : kCases) EXPECT_EQ(bytesToConfirm(one.progress), one.bytes) << one.says;
}

}  // namespace
}  // namespace plugin
