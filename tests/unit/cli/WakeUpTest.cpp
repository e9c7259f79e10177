#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <thread>

#include "playerx/cli/WakeUp.h"

namespace playerx::cli {
namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;

/// Leaves no zero where the next calls have their variables.
void fillStack() {
  volatile unsigned char bytes[8192];
  for (volatile unsigned char& byte : bytes) byte = 0xFF;
}

TEST(WakeUpTest, NoOtherSignalIsBlocked) {
  sigset_t blocked;
  sigfillset(&blocked);
  std::thread([&blocked] {  // one whose signals are its own
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    fillStack();
    blockInterrupts();
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
  })
      .join();
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) EXPECT_EQ(sigismember(&blocked, signal), 1);
  for (const int signal : {SIGTSTP, SIGWINCH, SIGALRM, SIGUSR1}) {
    EXPECT_EQ(sigismember(&blocked, signal), 0) << signal;
  }
}

TEST(WakeUpTest, NothingRaisedTimesOut) {
  WakeUp wakeUp;
  EXPECT_EQ(wakeUp.wait(milliseconds(0)), WakeReason::kTimeout);
}

TEST(WakeUpTest, ManyRaisesEndOneWait) {
  WakeUp wakeUp;
  wakeUp.raise();
  wakeUp.raise();
  EXPECT_EQ(wakeUp.wait(minutes(5)), WakeReason::kEvent);
  EXPECT_EQ(wakeUp.wait(milliseconds(0)), WakeReason::kTimeout);
}

TEST(WakeUpTest, ARaiseOfAnotherThreadEndsAWait) {
  WakeUp wakeUp;
  std::thread other([&wakeUp] { wakeUp.raise(); });
  EXPECT_EQ(wakeUp.wait(minutes(5)), WakeReason::kEvent);
  other.join();
}

TEST(WakeUpTest, AnInterruptGoesBeforeAnEvent) {
  WakeUp wakeUp;
  wakeUp.raise();
  ASSERT_EQ(pthread_kill(pthread_self(), SIGINT), 0);
  EXPECT_EQ(wakeUp.wait(minutes(5)), WakeReason::kInterrupt);
  EXPECT_EQ(wakeUp.wait(minutes(5)), WakeReason::kEvent);
}

TEST(WakeUpTest, ARestLeavesWhatWasRaised) {
  WakeUp wakeUp;
  wakeUp.raise();
  EXPECT_EQ(wakeUp.rest(milliseconds(0)), WakeReason::kTimeout);
  EXPECT_EQ(wakeUp.wait(minutes(5)), WakeReason::kEvent);
}

TEST(WakeUpTest, AnInterruptEndsARest) {
  WakeUp wakeUp;
  ASSERT_EQ(pthread_kill(pthread_self(), SIGINT), 0);
  EXPECT_EQ(wakeUp.rest(minutes(5)), WakeReason::kInterrupt);
}

TEST(WakeUpTest, AnInterruptIsTakenOnce) {
  WakeUp wakeUp;
  EXPECT_FALSE(wakeUp.takeInterrupt());
  ASSERT_EQ(pthread_kill(pthread_self(), SIGTERM), 0);
  EXPECT_TRUE(wakeUp.takeInterrupt());
  EXPECT_FALSE(wakeUp.takeInterrupt());
}

TEST(WakeUpTest, AnInterruptIsSeenOnEveryThreadUntilItIsTaken) {
  EXPECT_EXIT(
      {
        WakeUp wakeUp;
        bool isSeen = wakeUp.isInterrupted();
        if (isSeen) std::_Exit(1);
        kill(getpid(), SIGINT);
        std::thread([&] { isSeen = wakeUp.isInterrupted(); }).join();
        const bool isTaken = wakeUp.takeInterrupt();
        std::_Exit(isSeen && isTaken && !wakeUp.isInterrupted() ? 0 : 2);
      },
      testing::ExitedWithCode(0), "");
}

TEST(WakeUpTest, AnInterruptThatCameBeforeIsNotLost) {
  EXPECT_EXIT(
      {
        blockInterrupts();
        raise(SIGTERM);
        WakeUp wakeUp;
        std::_Exit(wakeUp.takeInterrupt() ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST(WakeUpTest, ReleasedInterruptsEndTheProgram) {
  EXPECT_EXIT(
      {
        std::signal(SIGINT, SIG_DFL);  // a shell has it ignored in the background
        WakeUp wakeUp;
        const InterruptsAllowed allowed;
        raise(SIGINT);
      },
      testing::KilledBySignal(SIGINT), "");
}

}  // namespace
}  // namespace playerx::cli
