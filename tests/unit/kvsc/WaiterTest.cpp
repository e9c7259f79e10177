#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <thread>

#include "kvsc/CancelToken.h"
#include "kvsc/UniqueFd.h"
#include "kvsc/Waiter.h"
#include "tests/unit/kvsc/FailingPoll.h"
#include "tests/unit/kvsc/WaitLimits.h"

namespace kvsc {
namespace {

using Milliseconds = Waiter::Milliseconds;
using Outcome = Waiter::Outcome;

/// A pipe that is empty until something is put in.
class Pipe {
 public:
  Pipe() {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    out_ = UniqueFd(ends[0]);
    in_ = UniqueFd(ends[1]);
  }

  int fd() const { return out_.get(); }
  void fill() { EXPECT_EQ(write(in_.get(), "x", 1), 1); }

 private:
  UniqueFd out_;
  UniqueFd in_;
};

/// Interrupts the process every few milliseconds, while it exists, with a signal without effect.
class Interruptions {
 public:
  Interruptions() {
    struct sigaction ignoring {};
    ignoring.sa_handler = [](int) {};
    sigaction(SIGALRM, &ignoring, &former_);
    repeatEvery(5000);
  }
  Interruptions(const Interruptions&) = delete;
  Interruptions& operator=(const Interruptions&) = delete;
  ~Interruptions() {
    repeatEvery(0);
    sigaction(SIGALRM, &former_, nullptr);
  }

 private:
  static void repeatEvery(suseconds_t microseconds) {
    const itimerval timer{{0, microseconds}, {0, microseconds}};
    setitimer(ITIMER_REAL, &timer, nullptr);
  }

  struct sigaction former_ {};
};

class WaiterTest : public testing::Test {
 protected:
  // Cancels once the other thread is waiting, or about to.
  std::thread cancelSoon() {
    return std::thread([this] { token_.cancel(); });
  }

  Pipe pipe_;
  CancelToken token_;
};

TEST_F(WaiterTest, AnAvailableEventIsNotWaitedFor) {
  pipe_.fill();
  Waiter waiter(&token_, kLong, kLong);
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kReady);
}

TEST_F(WaiterTest, AWaitEndsWithItsEvent) {
  Waiter waiter(nullptr, kNever, kNever);
  std::thread filler([this] { pipe_.fill(); });
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kReady);
  filler.join();
}

TEST_F(WaiterTest, AnErrorOfTheDescriptorEndsAWait) {
  Waiter waiter(nullptr, kNever, kNever);
  EXPECT_EQ(waiter.waitFor(1'000'000, POLLIN), Outcome::kReady);
}

TEST_F(WaiterTest, EachWaitHasALimit) {
  Waiter waiter(&token_, kSoon, kNever);
  const auto begin = Waiter::Clock::now();
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kTimedOut);
  EXPECT_GE(Waiter::Clock::now() - begin, kSoon);
}

TEST_F(WaiterTest, AWaitThatASignalInterruptsGoesOn) {
  Waiter waiter(nullptr, kSoon, kNever);
  const Interruptions interruptions;
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kTimedOut);
}

TEST_F(WaiterTest, AllWaitsTogetherHaveATotalLimit) {
  Waiter waiter(&token_, kLong, kSoon);
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kTimedOut);
}

TEST_F(WaiterTest, ACancelEndsAWaitWithoutLimit) {
  Waiter waiter(&token_, kNever, kNever);
  std::thread other = cancelSoon();
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kCancelled);
  other.join();
}

TEST_F(WaiterTest, ACancelPrecedesAnAvailableEvent) {
  pipe_.fill();
  token_.cancel();
  Waiter waiter(&token_, kLong, kLong);
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kCancelled);
}

TEST_F(WaiterTest, TheFirstBadEndDecidesForAllLaterWaits) {
  Waiter waiter(&token_, kSoon, kNever);
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kTimedOut);
  pipe_.fill();
  token_.cancel();
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kTimedOut);
  EXPECT_EQ(waiter.pause(kLong), Outcome::kTimedOut);
  EXPECT_EQ(waiter.mayGoOn(Waiter::Clock::now()), Outcome::kTimedOut);
  EXPECT_EQ(waiter.outcome(), Outcome::kTimedOut);
}

TEST_F(WaiterTest, AWaitThatTimedOutMayBeForgottenBeforeTheTotalLimit) {
  pipe_.fill();
  Waiter waiter(&token_, kSoon, kLong);
  Pipe empty;
  EXPECT_EQ(waiter.waitFor(empty.fd(), POLLIN), Outcome::kTimedOut);
  EXPECT_TRUE(waiter.mayTryAgain());
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kReady);
}

TEST_F(WaiterTest, TheTotalLimitIsNotForgotten) {
  Waiter waiter(&token_, kLong, kSoon);
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kTimedOut);
  EXPECT_FALSE(waiter.mayTryAgain());
}

TEST_F(WaiterTest, ACancelIsNotForgotten) {
  token_.cancel();
  Waiter waiter(&token_, kLong, kLong);
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kCancelled);
  EXPECT_FALSE(waiter.mayTryAgain());
}

TEST_F(WaiterTest, ARestartRenewsTheTotalLimit) {
  Waiter waiter(&token_, kNever, kSoon);
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kTimedOut);
  EXPECT_FALSE(waiter.mayTryAgain());
  waiter.restart();
  EXPECT_TRUE(waiter.mayTryAgain());
}

TEST_F(WaiterTest, AWaitElsewhereIsMeasuredFromItsBeginning) {
  Waiter waiter(&token_, kSoon, kNever);
  const auto now = Waiter::Clock::now();
  EXPECT_EQ(waiter.mayGoOn(now + kLong), Outcome::kReady);
  EXPECT_EQ(waiter.mayGoOn(now - kSoon), Outcome::kTimedOut);
}

TEST_F(WaiterTest, AWaitElsewhereSeesACancel) {
  Waiter waiter(&token_, kNever, kNever);
  EXPECT_EQ(waiter.mayGoOn(Waiter::Clock::now()), Outcome::kReady);
  token_.cancel();
  EXPECT_EQ(waiter.mayGoOn(Waiter::Clock::now()), Outcome::kCancelled);
}

TEST_F(WaiterTest, APauseLastsItsLengthWhateverTheLimits) {
  Waiter waiter(&token_, Milliseconds(1), Milliseconds(1));
  const auto begin = Waiter::Clock::now();
  EXPECT_EQ(waiter.pause(kSoon), Outcome::kReady);
  EXPECT_GE(Waiter::Clock::now() - begin, kSoon);
}

TEST_F(WaiterTest, ACancelEndsAPause) {
  Waiter waiter(&token_, kNever, kNever);
  std::thread other = cancelSoon();
  EXPECT_EQ(waiter.pause(kLong), Outcome::kCancelled);
  other.join();
}

TEST_F(WaiterTest, AStoppedWaiterWaitsForNothing) {
  Waiter waiter(nullptr, kNever, kNever);
  waiter.stopWaiting();
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kTimedOut);
}

TEST_F(WaiterTest, ATokenWithoutADescriptorEndsAWaitToo) {
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit noDescriptors{0, limit.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &noDescriptors), 0);
  CancelToken blind;
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  ASSERT_EQ(blind.fd(), -1);
  Waiter waiter(&blind, kNever, kNever);
  std::thread other([&] { blind.cancel(); });
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kCancelled);
  other.join();
}

TEST_F(WaiterTest, AWaitThatTheSystemRefusesEndsAtOnceWithItsError) {
  Waiter waiter(&token_, kNever, kNever);
  {
    const FailingPoll failing;
    EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kFailed);
  }
  EXPECT_EQ(waiter.error(), EINVAL);
  EXPECT_FALSE(waiter.mayTryAgain());
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kFailed);
}

TEST_F(WaiterTest, APauseThatTheSystemRefusesEndsAtOnceWithItsError) {
  Waiter waiter(&token_, kNever, kNever);
  const FailingPoll failing;
  EXPECT_EQ(waiter.pause(kLong), Outcome::kFailed);
  EXPECT_EQ(waiter.error(), EINVAL);
}

TEST_F(WaiterTest, EachBadEndHasItsErrorNumber) {
  Waiter waiter(&token_, kSoon, kNever);
  EXPECT_EQ(waiter.error(), 0);
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kTimedOut);
  EXPECT_EQ(waiter.error(), ETIMEDOUT);
  EXPECT_TRUE(waiter.mayTryAgain());
  EXPECT_EQ(waiter.error(), 0);
  token_.cancel();
  EXPECT_EQ(waiter.waitFor(pipe_.fd(), POLLIN), Outcome::kCancelled);
  EXPECT_EQ(waiter.error(), ECANCELED);
}

}  // namespace
}  // namespace kvsc
