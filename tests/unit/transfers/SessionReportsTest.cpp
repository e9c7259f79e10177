#include <gtest/gtest.h>

#include <memory>

#include "playerx/transfers/SessionReports.h"
#include "tests/unit/transfers/Receiver.h"

namespace playerx::transfers {
namespace {

using Events = std::vector<std::string>;

class SessionReportsTest : public ::testing::Test {
 protected:
  SessionReportsTest() { delivery_.setCallback(&receiver_); }
  ~SessionReportsTest() override { delivery_.setCallback(nullptr); }

  /// What the receiver is told before the session is over.
  Events toldBefore(const std::string& end) {
    delivery_.flush();
    EXPECT_TRUE(receiver_.waitUntil(
        1, [&](const Reported& all) { return !all.events.empty() && all.events.back() == end; }));
    return receiver_.of(1).events;
  }
  TransferReport logged() const { return session_->log.report(); }

  Receiver receiver_;
  ReportDelivery delivery_;
  const std::shared_ptr<Session> session_ = std::make_shared<Session>(1, DownloadRequest{});
  SessionReports reports_{session_, delivery_};
};

TEST_F(SessionReportsTest, TheFirstBytesReportTheBeginningOnce) {
  reports_.arrived(10, 100);
  reports_.arrived(20, 100);
  reports_.complete("/movies/film.avi");
  EXPECT_EQ(toldBefore("complete"), (Events{"began", "percent 10", "percent 20", "complete"}));
  EXPECT_EQ(logged().arrived, 20U);
  EXPECT_EQ(logged().total, 100U);
}

TEST_F(SessionReportsTest, AnEmptyPartialNeedsNoReportOfNothing) {
  reports_.found(0);
  reports_.arrived(0, 100);
  reports_.complete("/movies/film.avi");
  EXPECT_EQ(toldBefore("complete"), (Events{"began", "complete"}));
}

TEST_F(SessionReportsTest, WhatAPartialLostIsReported) {
  reports_.found(50);
  EXPECT_EQ(logged().arrived, 50U) << "no speed of this session";
  reports_.arrived(0, 100);
  reports_.complete("/movies/film.avi");
  EXPECT_EQ(toldBefore("complete"), (Events{"began", "percent 0", "complete"}));
}

TEST_F(SessionReportsTest, AWholeFilmIsAtItsEndAtOnce) {
  reports_.whole(70);
  reports_.complete("/movies/film.avi");
  EXPECT_EQ(toldBefore("complete"), (Events{"began", "percent 100", "complete"}));
  EXPECT_EQ(logged().total, 70U);
}

TEST_F(SessionReportsTest, ABrokenSessionIsToldWithItsCode) {
  reports_.broke(TransferFailure::kStalled, "no byte came");
  const std::string code = std::to_string(static_cast<int>(TransferFailure::kStalled));
  EXPECT_EQ(toldBefore("broke " + code), Events{"broke " + code});
  EXPECT_EQ(logged().failure, TransferFailure::kStalled);
}

}  // namespace
}  // namespace playerx::transfers
