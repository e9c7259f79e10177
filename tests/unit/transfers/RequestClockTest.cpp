#include <gtest/gtest.h>

#include "playerx/transfers/RequestClock.h"

namespace playerx::transfers {
namespace {

using std::chrono::seconds;

class RequestClockTest : public ::testing::Test {
 protected:
  const RequestClock::Clock::time_point start_{seconds(100)};
  RequestClock clock_{start_, seconds(2)};
};

TEST_F(RequestClockTest, TheSilenceBeginsWithTheRequest) {
  clock_.settle(start_ + seconds(10), false);
  EXPECT_EQ(clock_.silentUntil(seconds(30)), start_ + seconds(30));
}

TEST_F(RequestClockTest, WhatCameBeginsTheSilenceAnewOnce) {
  clock_.touch();
  clock_.settle(start_ + seconds(10), false);
  clock_.settle(start_ + seconds(20), false);
  EXPECT_EQ(clock_.silentUntil(seconds(30)), start_ + seconds(40));
}

TEST_F(RequestClockTest, WhatIsKeptBackIsNotSilent) {
  clock_.settle(start_ + seconds(10), true);
  EXPECT_EQ(clock_.silentUntil(seconds(30)), start_ + seconds(40));
}

TEST_F(RequestClockTest, TheSaveIsDueAfterItsTimeWhateverComes) {
  clock_.touch();
  clock_.settle(start_ + seconds(1), false);
  EXPECT_EQ(clock_.saveAt(), start_ + seconds(2));
}

}  // namespace
}  // namespace playerx::transfers
