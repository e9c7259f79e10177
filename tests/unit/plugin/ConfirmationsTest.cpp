#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <new>
#include <thread>

#include "plugin/Confirmations.h"
#include "tests/support/Gate.h"
#include "tests/support/fakes/EventLog.h"

namespace plugin {
namespace {

using Lines = std::vector<std::string>;

/// No thread of this process can be started during its lifetime: there is no room for a stack.
class NoThreads {
 public:
  NoThreads() {
    pthread_getattr_default_np(&usual_);
    pthread_attr_t huge{};
    pthread_attr_init(&huge);
    pthread_attr_setstacksize(&huge, std::size_t{1} << 47U);
    pthread_setattr_default_np(&huge);
  }
  ~NoThreads() { pthread_setattr_default_np(&usual_); }
  NoThreads(const NoThreads&) = delete;
  NoThreads& operator=(const NoThreads&) = delete;

 private:
  pthread_attr_t usual_{};
};

class ConfirmationsTest : public ::testing::Test {
 protected:
  void tell(long ticketId, std::uint64_t bytes) {
    telling_.open();
    if (hangs_) goOn_.wait();
    if (reportsItself_.exchange(false)) confirm(ticketId, bytes + 1);
    if (throws_.exchange(false)) throw std::bad_alloc();
    log_.add(std::to_string(ticketId) + " " + std::to_string(bytes));
  }

  bool mayWait() { return !stopping_; }
  void confirm(long ticketId, std::uint64_t bytes) {
    confirmations_.confirm(ticketId, bytes, [this] { return mayWait(); });
  }

  support::EventLog log_;
  support::Gate telling_;
  support::Gate goOn_;
  std::atomic<bool> hangs_{false};
  std::atomic<bool> stopping_{false};
  std::atomic<bool> reportsItself_{false};
  std::atomic<bool> throws_{false};
  EventCount events_;
  Confirmations confirmations_{[this](long id, std::uint64_t bytes) { tell(id, bytes); }, events_};
};

TEST_F(ConfirmationsTest, TheServicesHaveBeenToldWhenTheReportReturns) {
  confirm(7, 500);
  EXPECT_EQ(log_.lines(), Lines{"7 500"});
  confirm(7, 1000);
  EXPECT_EQ(log_.lines(), (Lines{"7 500", "7 1000"}));
}

TEST_F(ConfirmationsTest, AReportDoesNotWaitOnceSomebodyWaitsForIt) {
  hangs_ = true;
  std::thread reporter([this] { confirm(7, 500); });
  ASSERT_TRUE(telling_.wait());
  stopping_ = true;
  events_.raise();
  reporter.join();
  EXPECT_TRUE(log_.lines().empty());
  goOn_.open();
  EXPECT_TRUE(log_.waitFor("7 500")) << "in its own time";
}

TEST_F(ConfirmationsTest, WhatIsReportedMeanwhileIsToldInOrder) {
  hangs_ = true;
  stopping_ = true;
  for (const std::uint64_t bytes : {1, 2, 3}) confirm(7, bytes);
  EXPECT_TRUE(log_.lines().empty());
  goOn_.open();
  confirmations_.finish();
  EXPECT_EQ(log_.lines(), (Lines{"7 1", "7 2", "7 3"}));
}

TEST_F(ConfirmationsTest, AReportFromInsideTheServicesIsToldWhenTheyHaveReturned) {
  reportsItself_ = true;
  confirm(7, 500);
  confirmations_.finish();
  EXPECT_EQ(log_.lines(), (Lines{"7 500", "7 501"}));
}

TEST_F(ConfirmationsTest, ServicesThatThrowAreToldWhatComesNext) {
  throws_ = true;
  confirm(7, 500);
  confirm(7, 1000);
  EXPECT_EQ(log_.lines(), Lines{"7 1000"});
}

TEST_F(ConfirmationsTest, WithoutAThreadTheReportItselfTellsTheServices) {
  const NoThreads noThreads;
  reportsItself_ = true;
  confirm(7, 500);
  EXPECT_EQ(log_.lines(), (Lines{"7 500", "7 501"}));
  confirm(7, 1000);
  EXPECT_EQ(log_.lines(), (Lines{"7 500", "7 501", "7 1000"}));
}

TEST_F(ConfirmationsTest, FinishingWithoutAReportIsNothing) { confirmations_.finish(); }

TEST_F(ConfirmationsTest, ReportsOnManyThreadsAreAllTold) {
  std::vector<std::thread> reporters;
  for (int i = 0; i < 4; ++i) {
    reporters.emplace_back([this] {
      for (std::uint64_t bytes = 0; bytes < 50; ++bytes) confirm(7, bytes);
    });
  }
  for (auto& reporter : reporters) reporter.join();
  EXPECT_EQ(log_.lines().size(), 200U);
}

}  // namespace
}  // namespace plugin
