#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>

#include "playerx/transfers/SpeedWindow.h"

namespace playerx::transfers {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

class SpeedWindowTest : public ::testing::Test {
 protected:
  SpeedWindow::Time at(milliseconds time) const { return SpeedWindow::Time{} + time; }
  SpeedWindow window_;
};

TEST_F(SpeedWindowTest, IsUnknownBeforeTwoMeasurements) {
  EXPECT_EQ(window_.bytesPerSecond(at(seconds(1))), 0u);
  window_.feed(at(seconds(1)), 1000);
  EXPECT_EQ(window_.bytesPerSecond(at(seconds(1))), 0u);
}

TEST_F(SpeedWindowTest, IsTheAverageOfTheLastSeconds) {
  for (int i = 0; i <= 100; ++i) window_.feed(at(milliseconds(100 * i)), 100ULL * i);
  EXPECT_EQ(window_.bytesPerSecond(at(seconds(10))), 1000u);
  for (int i = 0; i <= 100; ++i) window_.feed(at(milliseconds(10'000 + 100 * i)), 10'000ULL + i);
  EXPECT_EQ(window_.bytesPerSecond(at(seconds(20))), 10u);
}

TEST_F(SpeedWindowTest, ManyMeasurementsInAMomentAreOne) {
  for (int i = 0; i <= 100'000; ++i) {
    window_.feed(at(milliseconds(i / 100)), static_cast<std::uint64_t>(i));
  }
  EXPECT_EQ(window_.bytesPerSecond(at(seconds(1))), 100'000u);
}

TEST_F(SpeedWindowTest, FallsToNothingWhenNothingComes) {
  window_.feed(at(seconds(0)), 0);
  window_.feed(at(seconds(1)), 1000);
  EXPECT_EQ(window_.bytesPerSecond(at(seconds(2))), 500u);
  EXPECT_EQ(window_.bytesPerSecond(at(seconds(4))), 0u);
}

TEST_F(SpeedWindowTest, BeginsAnewWhenTheFileDoes) {
  window_.feed(at(seconds(0)), 0);
  window_.feed(at(seconds(1)), 1000);
  window_.feed(at(seconds(2)), 10);
  EXPECT_EQ(window_.bytesPerSecond(at(seconds(2))), 0u);
}

}  // namespace
}  // namespace playerx::transfers
