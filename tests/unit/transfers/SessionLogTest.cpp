#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>

#include "playerx/transfers/SessionLog.h"

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

class SessionLogTest : public ::testing::Test {
 protected:
  static SessionLog::Time at(milliseconds time) { return SessionLog::Time{} + time; }
  TransferReport report() const { return log_.report(at(seconds(2))); }

  SessionLog log_;
};

TEST_F(SessionLogTest, TheSpeedIsToldWhileBytesArriveOnly) {
  log_.enter(TransferPhase::kArriving);
  log_.arrived(0, 4000, at(seconds(0)));
  log_.arrived(2000, 4000, at(seconds(2)));
  EXPECT_EQ(report().bytesPerSecond, 1000u);
  EXPECT_EQ(report().total, 4000u);
  log_.enter(TransferPhase::kPlacing);
  EXPECT_EQ(report().bytesPerSecond, 0u);
  EXPECT_EQ(report().arrived, 2000u);
}

TEST_F(SessionLogTest, AFailureIsForgottenOnceAllGoesWell) {
  log_.failedAttempt(TransferFailure::kDropped, "reset", 2);
  EXPECT_EQ(report().failure, TransferFailure::kDropped);
  EXPECT_EQ(report().detail, "reset");
  EXPECT_EQ(report().failedAttempts, 2u);
  log_.wentWell();
  EXPECT_EQ(report().failure, TransferFailure::kNone);
  EXPECT_EQ(report().detail, "");
  EXPECT_EQ(report().failedAttempts, 0u);
}

TEST_F(SessionLogTest, TheEndIsOnRecord) {
  log_.broke(TransferFailure::kRefused, "no");
  EXPECT_EQ(report().phase, TransferPhase::kBroken);
  EXPECT_EQ(report().failure, TransferFailure::kRefused);
  log_.completed("/movies/film.avi");
  EXPECT_EQ(report().phase, TransferPhase::kComplete);
  EXPECT_EQ(report().finalPath, "/movies/film.avi");
}

}  // namespace
}  // namespace playerx::transfers
