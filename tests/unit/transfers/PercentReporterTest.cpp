#include <gtest/gtest.h>

#include <cstdint>

#include "playerx/transfers/PercentReporter.h"

namespace playerx::transfers {
namespace {

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

}  // namespace
}  // namespace playerx::transfers
