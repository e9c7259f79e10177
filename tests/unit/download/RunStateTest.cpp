#include <gtest/gtest.h>

#include <atomic>
#include <future>

#include "download/RunState.h"
#include "tests/support/LockWaiter.h"

namespace download {
namespace {

TEST(RunState, IsRunningFromTheBeginOn) {
  RunState state;
  EXPECT_FALSE(state.isRunning());
  state.begin();
  EXPECT_TRUE(state.isRunning());
  EXPECT_FALSE(state.isStopping());
}

TEST(RunState, KeepsTheFirstOutcome) {
  for (const auto first : {DownloadStatusCompleted, DownloadStatusFailed}) {
    RunState state;
    state.begin();
    EXPECT_TRUE(state.reach(first));
    EXPECT_FALSE(state.reach(DownloadStatusFailed));
    EXPECT_FALSE(state.reach(DownloadStatusCompleted));
    state.askToStop();
    EXPECT_EQ(state.status(), first);
    EXPECT_TRUE(state.isStopping());
  }
}

TEST(RunState, IsStoppedByAStop) {
  RunState state;
  state.begin();
  state.askToStop();
  EXPECT_EQ(state.status(), DownloadStatusStopped);
  EXPECT_TRUE(state.cancelToken().isCancelled());
  EXPECT_FALSE(state.reach(DownloadStatusCompleted));
}

TEST(RunState, CountsAStopFromTheAnnouncementOn) {
  RunState state;
  state.prepare();
  state.askToStop();
  state.stopDone();
  state.begin();
  EXPECT_EQ(state.status(), DownloadStatusStopped);
}

TEST(RunState, BeginsAnewAfterTheEnd) {
  RunState state;
  state.begin();
  state.askToStop();
  state.stopDone();
  state.end();
  EXPECT_FALSE(state.cancelToken().isCancelled());
  state.begin();
  EXPECT_TRUE(state.isRunning());
}

TEST(RunState, IgnoresAStopBetweenRuns) {
  RunState state;
  state.askToStop();
  state.stopDone();
  EXPECT_FALSE(state.cancelToken().isCancelled());
  state.begin();
  EXPECT_TRUE(state.isRunning());
}

TEST(RunState, StopsARunThatBeginsDuringAStop) {
  RunState state;
  state.askToStop();
  state.begin();
  EXPECT_EQ(state.status(), DownloadStatusStopped);
  EXPECT_TRUE(state.cancelToken().isCancelled());
}

TEST(RunState, HasAStopWaitForAnEnteredRun) {
  RunState state;
  state.begin();
  support::LockWaiter stop([&] {
    state.askToStop();
    state.waitForEnd();
    state.stopDone();
  });
  EXPECT_TRUE(stop.isHeldUp());
  state.waitForOutcome();
  EXPECT_TRUE(stop.isHeldUp());  // an outcome is not the end
  state.end();
  stop.join();
}

TEST(RunState, DoesNotWaitForARunThatIsOnlyAnnounced) {
  RunState state;
  state.prepare();
  state.waitForEnd();
  state.begin();
  state.end();
  state.waitForEnd();
}

TEST(RunState, DoesNotWaitForARunOfTheCallingThread) {
  RunState state;
  state.begin();
  state.waitForEnd();
  state.end();
}

TEST(RunState, WakesTheWaitForTheOutcome) {
  RunState state;
  state.begin();
  auto waiting = std::async(std::launch::async, [&] { state.waitForOutcome(); });
  state.reach(DownloadStatusFailed);
  waiting.get();
  EXPECT_EQ(state.status(), DownloadStatusFailed);
}

TEST(RunState, WaitsUntilSomethingHasEnded) {
  RunState state;
  state.begin();
  std::atomic<bool> ended{false};
  auto waiting = std::async(std::launch::async,
                            [&] { return state.waitUnlessStopped([&] { return ended.load(); }); });
  ended = true;
  state.wake();
  EXPECT_TRUE(waiting.get());
}

TEST(RunState, GivesWaitingUpWhenStopped) {
  RunState state;
  state.begin();
  auto waiting =
      std::async(std::launch::async, [&] { return state.waitUnlessStopped([] { return false; }); });
  state.askToStop();
  EXPECT_FALSE(waiting.get());
}

TEST(RunState, PrefersAnEndToAStop) {
  RunState state;
  state.begin();
  state.askToStop();
  EXPECT_TRUE(state.waitUnlessStopped([] { return true; }));
}

}  // namespace
}  // namespace download
