#include <gtest/gtest.h>

#include <optional>

#include "playerx/transfers/SessionLog.h"

namespace playerx::transfers {
namespace {

class SessionLogTest : public ::testing::Test {
 protected:
  TransferReport report() const { return log_.report(); }

  SessionLog log_;
};

TEST_F(SessionLogTest, TheBytesStayKnownWhenNoMoreCome) {
  log_.enter(TransferPhase::kArriving);
  log_.arrived(2000, std::nullopt);
  EXPECT_EQ(report().total, 0u);
  log_.arrived(4000, 4000);
  log_.enter(TransferPhase::kPlacing);
  EXPECT_EQ(report().arrived, 4000u);
  EXPECT_EQ(report().total, 4000u);
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
