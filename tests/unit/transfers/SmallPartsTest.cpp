#include <gtest/gtest.h>

#include <map>
#include <string>

#include "playerx/transfers/PercentReporter.h"
#include "playerx/transfers/SpeedWindow.h"
#include "playerx/transfers/TransferFailure.h"

namespace playerx::transfers {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(PercentTest, IsRoundedDown) {
  EXPECT_EQ(percentOf(0, 1000), 0);
  EXPECT_EQ(percentOf(9, 1000), 0);
  EXPECT_EQ(percentOf(10, 1000), 1);
  EXPECT_EQ(percentOf(999, 1000), 99);
  EXPECT_EQ(percentOf(1000, 1000), 100);
}

TEST(PercentTest, AnEmptyFileIsThere) { EXPECT_EQ(percentOf(0, 0), 100); }

TEST(PercentTest, HugeFilesDoNotOverflow) {
  EXPECT_EQ(percentOf(UINT64_MAX - 1, UINT64_MAX), 99);
  EXPECT_EQ(percentOf(UINT64_MAX / 2, UINT64_MAX), 49);
}

TEST(PercentReporterTest, ReportsEachChangeOnce) {
  PercentReporter reporter(std::nullopt);
  EXPECT_EQ(reporter.next(0, 1000), 0);
  EXPECT_EQ(reporter.next(5, 1000), std::nullopt);
  EXPECT_EQ(reporter.next(10, 1000), 1);
  EXPECT_EQ(reporter.next(500, 1000), 50);
  EXPECT_EQ(reporter.next(505, 1000), std::nullopt);
  EXPECT_EQ(reporter.next(0, 1000), 0);
  EXPECT_EQ(reporter.next(1000, 1000), 100);
}

TEST(PercentReporterTest, WhatIsTakenForGrantedIsNoChange) {
  PercentReporter reporter(0);
  EXPECT_EQ(reporter.next(0, 1000), std::nullopt);
  EXPECT_EQ(reporter.next(10, 1000), 1);
}

TEST(PercentReporterTest, WithoutTotalThereIsNone) {
  PercentReporter reporter(std::nullopt);
  EXPECT_EQ(reporter.next(10, std::nullopt), std::nullopt);
}

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

TEST(FailureWordTest, EachHasAWordOfItsOwn) {
  EXPECT_EQ(failureWord(TransferFailure::kNone), "none");
  EXPECT_EQ(failureWord(TransferFailure::kNoSuchHost), "no_such_host");
  EXPECT_EQ(failureWord(TransferFailure::kKeepsChanging), "keeps_changing");
  EXPECT_EQ(failureWord(TransferFailure::kMediaFolder), "media_folder");
  EXPECT_EQ(failureWord(TransferFailure::kInternal), "internal");
  std::map<std::string, int> words;
  for (int i = 0; i <= static_cast<int>(TransferFailure::kInternal); ++i) {
    ++words[failureWord(static_cast<TransferFailure>(i))];
  }
  EXPECT_EQ(words.size(), static_cast<std::size_t>(TransferFailure::kInternal) + 1);
}

TEST(FailureWordTest, AStatusIsNamedByItsNumber) {
  EXPECT_EQ(failureWord(failureOfStatus(404)), "http_404");
  EXPECT_EQ(statusOfFailure(failureOfStatus(404)), 404);
  EXPECT_EQ(statusOfFailure(TransferFailure::kRefused), 0);
}

TEST(FailureWordTest, UnknownNumbersAreFailuresOfThisSide) {
  EXPECT_EQ(failureWord(static_cast<TransferFailure>(99)), "internal");
  EXPECT_EQ(failureWord(static_cast<TransferFailure>(-1)), "internal");
}

}  // namespace
}  // namespace playerx::transfers
