#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "plugin/TimeRemaining.h"

namespace plugin {
namespace {

struct Case {
  const char* says;
  ProgressStep step;  ///< last time, now, previous percent, percent
  std::optional<std::uint32_t> remaining;
};

constexpr std::uint32_t kMost = std::numeric_limits<std::uint32_t>::max();

const std::vector<Case> kCases = {
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
    {"the longest time", {1, 5000000000, 1, 2}, kMost},
    {"previous percents far below", {100, 130, std::numeric_limits<int>::min(), 50}, std::nullopt},
};

TEST(TimeRemaining, FollowsFromTwoReportsInARow) {
  for (const Case& one : kCases) {
    EXPECT_EQ(estimateTimeRemaining(one.step), one.remaining) << one.says;
  }
}

}  // namespace
}  // namespace plugin
