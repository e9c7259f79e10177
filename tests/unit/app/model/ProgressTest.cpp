#include <gtest/gtest.h>

#include "playerx/app/model/Progress.h"

namespace playerx::model {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::uint64_t kTotal = 100'000;

class ProgressMeterTest : public testing::Test {
 protected:
  /// Bytes arrive at this speed for some time, looked at twice a second.
  Progress flow(std::uint64_t bytesPerSecond, int forSeconds) {
    for (int i = 0; i < 2 * forSeconds; ++i) {
      now_ += milliseconds(500);
      arrived_ += bytesPerSecond / 2;
      meter_.feed(now_, arrived_, total_);
    }
    return meter_.progress();
  }

  ProgressMeter meter_;
  ProgressMeter::Clock::time_point now_{seconds(1000)};
  std::uint64_t arrived_ = 0;
  std::uint64_t total_ = kTotal;
};

TEST_F(ProgressMeterTest, NothingIsKnownBeforeTheFirstReport) {
  EXPECT_EQ(meter_.progress(), Progress{});
}

TEST_F(ProgressMeterTest, TheTimeLeftFollowsFromTheSpeed) {
  const Progress progress = flow(1000, 20);
  EXPECT_EQ(progress.arrived, 20'000u);
  EXPECT_EQ(progress.bytesPerSecond, 1000u);
  EXPECT_EQ(progress.secondsLeft, 80u);
  EXPECT_EQ(progress.silentSeconds, 0u);
}

TEST_F(ProgressMeterTest, WithoutSizeTheTimeLeftIsNotKnown) {
  total_ = 0;
  EXPECT_EQ(flow(1000, 5).secondsLeft, std::nullopt);
}

TEST_F(ProgressMeterTest, TheTimeLeftNeverGoesUpWhileTheSpeedWavers) {
  std::uint64_t last = *flow(1000, 20).secondsLeft;
  for (int i = 0; i < 20; ++i) {
    const std::uint64_t left = *flow(i % 2 == 0 ? 1050 : 950, 1).secondsLeft;
    EXPECT_LE(left, last);
    last = left;
  }
}

TEST_F(ProgressMeterTest, TheSpeedDoesNotJumpBackAndForth) {
  const std::uint64_t speed = flow(1000, 20).bytesPerSecond;
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(flow(i % 2 == 0 ? 1050 : 950, 1).bytesPerSecond, speed);
  }
}

TEST_F(ProgressMeterTest, ARealChangeOfSpeedIsShownWithinTheWindow) {
  flow(1000, 20);
  const Progress progress = flow(4000, 12);
  EXPECT_NEAR(double(progress.bytesPerSecond), 4000, 400);
  EXPECT_NEAR(double(*progress.secondsLeft), 8, 2);
}

TEST_F(ProgressMeterTest, ASilenceIsCountedFromItsLastByte) {
  flow(1000, 20);
  EXPECT_EQ(flow(0, 4).silentSeconds, 0u);
  const Progress progress = flow(0, 8);
  EXPECT_EQ(progress.silentSeconds, 12u);
  EXPECT_EQ(progress.bytesPerSecond, 0u);
  EXPECT_EQ(progress.secondsLeft, std::nullopt);
  EXPECT_EQ(flow(1000, 1).silentSeconds, 0u);
}

TEST_F(ProgressMeterTest, TheTimeInWhichTheProcessWasStoppedIsNoSilence) {
  flow(1000, 20);
  now_ += seconds(3600);
  EXPECT_EQ(flow(0, 1).silentSeconds, 0u);
  EXPECT_NEAR(double(*flow(1000, 12).secondsLeft), 100 - 20 - 12, 7);
}

ItemState film(DownloadStatusEnumType status, std::uint64_t size, int percent) {
  ItemState item;
  item.status = status;
  item.size = size;
  item.percent = percent;
  return item;
}

TEST(QueueProgressTest, CountsItemsWithTheirBytes) {
  const QueueProgress progress = progressOf(
      {film(DownloadStatusCompleted, 3000, 100), film(DownloadStatusDownloading, 2000, 50),
       film(DownloadStatusFailed, 1000, 20), film(DownloadStatusQueued, 0, 0)},
      true);
  EXPECT_EQ(progress, (QueueProgress{4, 1, 4200, 6000, 1, true}));
}

}  // namespace
}  // namespace playerx::model
