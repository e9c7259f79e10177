#include <gtest/gtest.h>

#include "playerx/transfers/RetryPlan.h"

namespace playerx::transfers {
namespace {

using std::chrono::seconds;

constexpr RetryRules kRules;
constexpr double kNoJitter = 0.5;

TEST(PauseTest, DoublesFromRetryToRetry) {
  const int wanted[] = {1, 2, 4, 8, 16};
  for (unsigned number = 1; number <= 5; ++number) {
    EXPECT_EQ(pauseBeforeRetry(kRules, number, kNoJitter, {}), seconds(wanted[number - 1]));
  }
}

TEST(PauseTest, HasABound) {
  EXPECT_EQ(pauseBeforeRetry(kRules, 6, kNoJitter, {}), seconds(30));
  EXPECT_EQ(pauseBeforeRetry(kRules, 1000, kNoJitter, {}), seconds(30));
}

TEST(PauseTest, JitterSpreadsItByAQuarter) {
  EXPECT_EQ(pauseBeforeRetry(kRules, 3, 0.0, {}), seconds(3));
  EXPECT_LT(pauseBeforeRetry(kRules, 3, 0.999, {}), seconds(5));
  EXPECT_GT(pauseBeforeRetry(kRules, 3, 0.999, {}), Milliseconds(4900));
}

TEST(PauseTest, TheServerCanAskForMoreWithinBounds) {
  EXPECT_EQ(pauseBeforeRetry(kRules, 1, kNoJitter, seconds(20)), seconds(20));
  EXPECT_EQ(pauseBeforeRetry(kRules, 5, kNoJitter, seconds(2)), seconds(16));
  EXPECT_EQ(pauseBeforeRetry(kRules, 1, kNoJitter, seconds(100'000)), seconds(120));
  EXPECT_EQ(pauseBeforeRetry(kRules, 1, kNoJitter, seconds(0)), seconds(1));
}

TEST(RetryAfterTest, IsANumberOfSecondsOrADate) {
  constexpr std::time_t kNow = 1735732800;  // 2025-01-01 12:00:00
  EXPECT_EQ(parseRetryAfter("7", kNow), seconds(7));
  EXPECT_EQ(parseRetryAfter("0", kNow), seconds(0));
  EXPECT_EQ(parseRetryAfter("Wed, 01 Jan 2025 12:00:30 GMT", kNow), seconds(30));
  EXPECT_EQ(parseRetryAfter("Wed, 01 Jan 2025 11:00:00 GMT", kNow), seconds(0));
  EXPECT_EQ(parseRetryAfter("18446744073709551615", kNow), seconds(1'000'000));
  for (const char* text : {"", "-1", "soon", "7s"}) EXPECT_FALSE(parseRetryAfter(text, kNow));
}

TEST(RetryCounterTest, FiveFailuresInARowAreForgiven) {
  RetryCounter counter(0);
  for (unsigned number = 1; number <= 5; ++number) EXPECT_EQ(counter.failed(kRules), number);
  EXPECT_FALSE(counter.failed(kRules));
  EXPECT_FALSE(counter.failed(kRules));
}

TEST(RetryCounterTest, ProgressBeginsANewCount) {
  RetryCounter counter(100);
  counter.failed(kRules);
  counter.arrived(101);
  EXPECT_EQ(counter.failed(kRules), 1u);
}

TEST(RetryCounterTest, WhatWasThereBeforeIsNoProgress) {
  RetryCounter counter(100);
  counter.failed(kRules);
  counter.arrived(100);
  counter.arrived(1);
  EXPECT_EQ(counter.failed(kRules), 2u);
}

TEST(WorthRetryingTest, ABrokenOrSilentLineAlwaysIs) {
  for (const auto failure : {TransferFailure::kDropped, TransferFailure::kStalled}) {
    EXPECT_TRUE(isWorthRetrying(failure, false));
    EXPECT_TRUE(isWorthRetrying(failure, true));
  }
}

TEST(WorthRetryingTest, AServerThatWasThereMayComeBack) {
  for (const auto failure :
       {TransferFailure::kNoSuchHost, TransferFailure::kNoSuchProxy, TransferFailure::kRefused,
        TransferFailure::kTimeout, TransferFailure::kNetwork, TransferFailure::kTls}) {
    EXPECT_FALSE(isWorthRetrying(failure, false));
    EXPECT_TRUE(isWorthRetrying(failure, true));
  }
}

TEST(WorthRetryingTest, NothingElseIs) {
  for (const auto failure :
       {TransferFailure::kCertificate, TransferFailure::kTrustFile, TransferFailure::kRedirectLoop,
        TransferFailure::kBadRedirect, TransferFailure::kBadAnswer, TransferFailure::kNoSpace,
        TransferFailure::kInternal, failureOfStatus(404)}) {
    EXPECT_FALSE(isWorthRetrying(failure, true));
  }
}

}  // namespace
}  // namespace playerx::transfers
