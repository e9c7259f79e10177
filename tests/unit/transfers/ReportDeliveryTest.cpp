#include <gtest/gtest.h>

#include <memory>

#include "playerx/transfers/ReportDelivery.h"
#include "tests/support/Gate.h"
#include "tests/support/WaitFor.h"
#include "tests/unit/transfers/Receiver.h"

namespace playerx::transfers {
namespace {

using Events = std::vector<std::string>;

class ReportDeliveryTest : public ::testing::Test {
 protected:
  ReportDeliveryTest() { delivery_.setCallback(&receiver_); }
  ~ReportDeliveryTest() override { delivery_.setCallback(nullptr); }

  static std::shared_ptr<Session> session(unsigned long long uid) {
    return std::make_shared<Session>(uid, DownloadRequest{});
  }
  bool arrives(const std::shared_ptr<Session>& session, const Events& events) {
    return receiver_.waitUntil(session->uid,
                               [&](const Reported& all) { return all.events == events; });
  }

  Receiver receiver_;
  ReportDelivery delivery_;
  const std::shared_ptr<Session> session_ = session(1);
};

TEST_F(ReportDeliveryTest, ReportsArriveInTheirOrder) {
  delivery_.header(session_, "HTTP/1.1 200 OK\r\n");
  delivery_.began(session_);
  for (int percent : {0, 50, 100}) delivery_.percent(session_, percent);
  delivery_.complete(session_);
  delivery_.flush();
  EXPECT_TRUE(arrives(session_, {"began", "percent 0", "percent 50", "percent 100", "complete"}));
  EXPECT_EQ(receiver_.of(1).headers, std::vector<std::string>{"HTTP/1.1 200 OK\r\n"});
  EXPECT_TRUE(session_->announced);
}

TEST_F(ReportDeliveryTest, ABrokenSessionTellsItsCode) {
  delivery_.broke(session_, 404);
  delivery_.flush();
  EXPECT_TRUE(arrives(session_, {"broke 404"}));
  EXPECT_FALSE(session_->announced);
}

TEST_F(ReportDeliveryTest, WhatWasPostedAfterTheFlushWaitsForTheNext) {
  delivery_.began(session_);
  delivery_.flush();
  ASSERT_TRUE(arrives(session_, {"began"}));
  delivery_.percent(session_, 1);
  const auto other = session(2);
  EXPECT_EQ(receiver_.of(1).events, Events{"began"});
  delivery_.began(other);
  delivery_.flush();
  EXPECT_TRUE(arrives(other, {"began"}));
  EXPECT_EQ(receiver_.of(1).events, (Events{"began", "percent 1"}));
}

TEST_F(ReportDeliveryTest, AStoppedSessionIsNotReported) {
  const auto other = session(2);
  delivery_.began(session_);
  delivery_.began(other);
  session_->stopped = true;
  delivery_.flush();
  EXPECT_TRUE(arrives(other, {"began"}));
  EXPECT_EQ(receiver_.of(1).events, Events{});
}

TEST_F(ReportDeliveryTest, WithoutAReceiverReportsAreDropped) {
  delivery_.setCallback(nullptr);
  delivery_.began(session_);
  delivery_.flush();
  delivery_.setCallback(&receiver_);
  const auto other = session(2);
  delivery_.began(other);
  delivery_.flush();
  EXPECT_TRUE(arrives(other, {"began"}));
  EXPECT_EQ(receiver_.of(1).events, Events{});
}

TEST_F(ReportDeliveryTest, AReportMayUnregisterWhichDropsTheRest) {
  support::Gate isDone;
  receiver_.during([&](const std::string&) {
    delivery_.percent(session_, 1);
    delivery_.setCallback(nullptr);
    delivery_.flush();
    isDone.open();
  });
  delivery_.began(session_);
  delivery_.percent(session_, 0);
  delivery_.flush();
  EXPECT_TRUE(isDone.wait());
  EXPECT_EQ(receiver_.of(1).events, Events{"began"});
}

TEST(ReportDeliveryEndTest, TheEndDropsWhatIsLeft) {
  Receiver receiver;
  const auto session = std::make_shared<Session>(1, DownloadRequest{});
  {
    ReportDelivery delivery;
    delivery.setCallback(&receiver);
    delivery.began(session);
  }
  EXPECT_EQ(receiver.of(1).events, Events{});
}

}  // namespace
}  // namespace playerx::transfers
