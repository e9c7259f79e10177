#include <gtest/gtest.h>

#include <chrono>

#include "kvpm/TimeTools.h"

namespace {

using kvpm::TimeTools;
using Clock = std::chrono::steady_clock;

TEST(TimeTools, TheClockNeverGoesBack) {
  std::int64_t last = TimeTools::getTime();
  for (int reading = 0; reading < 10000; ++reading) {
    const std::int64_t now = TimeTools::getTime();
    ASSERT_GE(now, last);
    last = now;
  }
}

TEST(TimeTools, TheClockIsAboveZeroInWholeSecondsToo) {
  EXPECT_GT(TimeTools::getTime(), 0);
  EXPECT_GT(TimeTools::getTime() / TimeTools::getTimeScale(), 0);
}

TEST(TimeTools, TheScaleIsConstant) {
  EXPECT_GT(TimeTools::getTimeScale(), 0);
  EXPECT_EQ(TimeTools::getTimeScale(), TimeTools::getTimeScale());
}

TEST(TimeTools, TheScaleIsTheTicksOfOneSecond) {
  const auto before = Clock::now();
  const std::int64_t first = TimeTools::getTime();
  TimeTools::sleep(20);
  const std::int64_t ticks = TimeTools::getTime() - first;
  const std::chrono::duration<double> passed = Clock::now() - before;
  EXPECT_GE(ticks, TimeTools::getTimeScale() / 50);
  EXPECT_LE(static_cast<double>(ticks) / static_cast<double>(TimeTools::getTimeScale()),
            passed.count() + 1e-6);
}

TEST(TimeTools, SleepTakesAtLeastItsTime) {
  const auto before = Clock::now();
  TimeTools::sleep(15);
  EXPECT_GE(Clock::now() - before, std::chrono::milliseconds(15));
}

TEST(TimeTools, ASleepOfZeroReturns) { TimeTools::sleep(0); }

}  // namespace
