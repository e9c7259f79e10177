#include <gtest/gtest.h>

#include "playerx/transfers/RateLimit.h"

namespace playerx::transfers {
namespace {

using std::chrono::seconds;

class RateLimitTest : public ::testing::Test {
 protected:
  bool isOpenAt(seconds time) const { return limit_.isOpen(start_ + time); }
  void takeAt(seconds time, std::size_t bytes) { limit_.take(bytes, start_ + time); }

  const RateLimit::Clock::time_point start_ = RateLimit::Clock::now();
  RateLimit limit_;
};

TEST_F(RateLimitTest, WithoutALimitEverythingMayCome) {
  takeAt(seconds(0), 1'000'000'000);
  EXPECT_TRUE(isOpenAt(seconds(0)));
  EXPECT_EQ(limit_.opensAt(), std::nullopt);
}

TEST_F(RateLimitTest, WhatCameIsWaitedForUntilItFitsTheRate) {
  limit_.set(1000, start_);
  takeAt(seconds(0), 3000);
  EXPECT_FALSE(isOpenAt(seconds(2)));
  EXPECT_TRUE(isOpenAt(seconds(3)));
  EXPECT_EQ(limit_.opensAt(), start_ + seconds(3));
}

TEST_F(RateLimitTest, IdleTimeIsNotMadeUpFor) {
  limit_.set(1000, start_);
  takeAt(seconds(60), 2000);
  EXPECT_FALSE(isOpenAt(seconds(61)));
  EXPECT_TRUE(isOpenAt(seconds(62)));
}

TEST_F(RateLimitTest, ANewLimitHoldsAtOnce) {
  limit_.set(1, start_);
  takeAt(seconds(0), 10'000);
  EXPECT_FALSE(isOpenAt(seconds(1)));
  limit_.set(1000, start_ + seconds(1));
  EXPECT_TRUE(isOpenAt(seconds(1)));
}

}  // namespace
}  // namespace playerx::transfers
