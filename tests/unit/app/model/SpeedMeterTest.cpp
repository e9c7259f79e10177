#include <gtest/gtest.h>

#include "playerx/app/model/SpeedMeter.h"

namespace playerx::model {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

const SpeedMeter::Clock::time_point kStart{};

TEST(SpeedMeterTest, OneReportGivesNoSpeed) {
  SpeedMeter meter;
  EXPECT_EQ(meter.bytesPerSecond(), 0u);
  meter.feed(kStart, 1000);
  EXPECT_EQ(meter.bytesPerSecond(), 0u);
}

TEST(SpeedMeterTest, TwoReportsGiveTheirDifference) {
  SpeedMeter meter;
  meter.feed(kStart, 1000);
  meter.feed(kStart + milliseconds(500), 2000);
  EXPECT_EQ(meter.bytesPerSecond(), 2000u);
}

TEST(SpeedMeterTest, OldReportsLeaveTheWindow) {
  SpeedMeter meter;
  for (int second = 0; second <= 20; ++second) meter.feed(kStart + seconds(second), 0);
  for (int second = 21; second <= 31; ++second) {
    meter.feed(kStart + seconds(second), static_cast<std::uint64_t>(second - 20) * 100);
  }
  EXPECT_EQ(meter.bytesPerSecond(), 100u);
}

TEST(SpeedMeterTest, FewerBytesThanBeforeBeginANewMeasurement) {
  SpeedMeter meter;
  meter.feed(kStart, 5000);
  meter.feed(kStart + seconds(1), 100);
  EXPECT_EQ(meter.bytesPerSecond(), 0u);
  meter.feed(kStart + seconds(2), 400);
  EXPECT_EQ(meter.bytesPerSecond(), 300u);
}

TEST(SpeedMeterTest, TheTimeInWhichTheProcessWasStoppedDoesNotCount) {
  SpeedMeter meter;
  meter.feed(kStart, 0);
  meter.feed(kStart + seconds(1), 1000);
  meter.feed(kStart + seconds(600), 1500);
  EXPECT_EQ(meter.bytesPerSecond(), 0u);
  meter.feed(kStart + seconds(601), 2500);
  EXPECT_EQ(meter.bytesPerSecond(), 1000u);
}

TEST(SpeedMeterTest, ALongPauseOfTheServerCounts) {
  SpeedMeter meter;
  meter.feed(kStart, 0);
  meter.feed(kStart + SpeedMeter::kLongestPause, 5000);
  EXPECT_EQ(meter.bytesPerSecond(), 1000u);
}

TEST(SpeedMeterTest, ReportsThatComeFastCountToo) {
  SpeedMeter meter;
  meter.feed(kStart, 0);
  for (int i = 1; i <= 1000; ++i) {
    meter.feed(kStart + i * milliseconds(1), static_cast<std::uint64_t>(i) * 1000);
    const double expected = i < 250 ? 0 : 1e6;
    ASSERT_NEAR(static_cast<double>(meter.bytesPerSecond()), expected, 2) << i;
  }
}

TEST(SpeedMeterTest, WhatComesInAnInstantGivesNoSpeed) {
  SpeedMeter meter;
  meter.feed(kStart, 1);
  meter.feed(kStart, 2'000'000);
  meter.feed(kStart + milliseconds(200), 2'000'000);
  EXPECT_EQ(meter.bytesPerSecond(), 0u);
}

}  // namespace
}  // namespace playerx::model
