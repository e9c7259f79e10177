#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "plugin/ProgressRules.h"

namespace plugin {
namespace {

struct Confirmation {
  const char* says;
  ProgressOfTicket progress;  ///< ticket id, size, previous percent, percent
  std::optional<std::uint64_t> bytes;
};

constexpr std::uint64_t kMostBytes = std::numeric_limits<std::uint64_t>::max();

const std::vector<Confirmation> kConfirmations = {
    {"the first report confirms its share", {7, 1000, 0, 50}, 500},
    {"the last report confirms all", {7, 1000, 50, 100}, 1000},
    {"a report in between confirms nothing", {7, 1000, 50, 51}, std::nullopt},
    {"a report of 0 confirms nothing", {7, 1000, 0, 0}, std::nullopt},
    {"1 percent is enough", {7, 1000, 0, 1}, 10},
    {"a second report of 100 confirms nothing", {7, 1000, 100, 100}, std::nullopt},
    {"the first report may be that of 100", {7, 1000, 0, 100}, 1000},
    {"a previous percent below 0 counts as 0", {7, 1000, -1, 3}, 30},
    {"a fall from 100 to 99 confirms nothing", {7, 1000, 100, 99}, std::nullopt},
    {"no ticket, no confirmation", {0, 1000, 0, 50}, std::nullopt},
    {"a negative ticket id is no ticket", {-7, 1000, 0, 50}, std::nullopt},
    {"nothing is confirmed of an unknown size", {7, 0, 0, 50}, std::nullopt},
    {"parts of a byte are cut off", {7, 101, 0, 50}, 50},
    {"the share has single precision", {7, 16777217, 0, 100}, 16777216},
    {"the share is not computed in double precision", {7, 1000000007, 0, 33}, 330000000},
    {"the percent is divided first", {7, 1000000, 0, 13}, 129999},
    {"the quotient is rounded before it is multiplied", {7, 700, 0, 53}, 370},
    {"all bytes are exact", {7, 16777217, 1, 100}, 16777217},
    {"the greatest size", {7, kMostBytes, 0, 100}, kMostBytes},
    {"half of the greatest size", {7, kMostBytes, 0, 50}, 1ULL << 63},
    {"more than there is", {7, kMostBytes, 0, 150}, kMostBytes},
};

TEST(ConfirmedBytes, FollowFromTwoReportsInARow) {
  for (const Confirmation& one : kConfirmations)
    EXPECT_EQ(bytesToConfirm(one.progress), one.bytes) << one.says;
}

struct Estimate {
  const char* says;
  ProgressStep step;  ///< last time, now, previous percent, percent
  std::optional<std::uint32_t> remaining;
};

constexpr std::uint32_t kLongest = std::numeric_limits<std::uint32_t>::max();

const std::vector<Estimate> kEstimates = {
    {"ten percent in thirty seconds leave eighty", {100, 130, 10, 20}, 240},
    {"nothing is left at the end", {130, 140, 20, 100}, 0},
    {"nothing is known at the beginning", {100, 130, 10, 0}, 0},
    {"the end counts without an earlier report", {0, 140, 0, 100}, 0},
    {"the first report says nothing", {0, 130, 0, 10}, std::nullopt},
    {"no gain says nothing", {100, 130, 20, 20}, std::nullopt},
    {"a loss says nothing", {100, 130, 30, 20}, std::nullopt},
    {"no time passed keeps the estimate", {100, 100, 10, 20}, std::nullopt},
    {"less than a second keeps the estimate", {100, 101, 1, 99}, std::nullopt},
    {"the pace is rounded before it is multiplied", {100, 101, 2, 51}, std::nullopt},
    {"parts of a second are cut off", {100, 110, 0, 30}, 23},
    {"a clock that went back keeps the estimate", {130, 100, 10, 20}, std::nullopt},
    {"the first percent after 0", {100, 101, 0, 1}, 99},
    {"a percent above 100 keeps the estimate", {100, 130, 10, 150}, std::nullopt},
    {"a negative percent keeps the estimate", {100, 130, -10, -5}, std::nullopt},
    {"the longest time", {1, 5000000000, 1, 2}, kLongest},
    {"previous percents far below", {100, 130, std::numeric_limits<int>::min(), 50}, std::nullopt},
};

TEST(TimeRemaining, FollowsFromTwoReportsInARow) {
  for (const Estimate& one : kEstimates) {
    EXPECT_EQ(estimateTimeRemaining(one.step), one.remaining) << one.says;
  }
}

}  // namespace
}  // namespace plugin
