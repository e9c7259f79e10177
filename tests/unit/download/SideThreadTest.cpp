#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <stdexcept>
#include <thread>

#include "download/BackgroundThread.h"
#include "download/RunState.h"
#include "download/SideThread.h"
#include "tests/support/Gate.h"
#include "tests/support/LockWaiter.h"

namespace download {
namespace {

using support::Gate;

class SideThreadTest : public testing::Test {
 protected:
  SideThreadTest() { run_.begin(); }
  ~SideThreadTest() override { run_.end(); }

  /// Leaves a call behind that stays until the gate is opened: a stop has ended the wait for it.
  void leaveCallBehind() {
    std::thread stopper([this] {
      begun_.wait();
      stop();
    });
    EXPECT_FALSE(side_.run([this] {
      begun_.open();
      leave_.wait();
    }));
    stopper.join();
    run_.end();
    run_.begin();
  }

  void stop() {
    run_.askToStop();
    run_.stopDone();
  }

  Gate begun_;
  Gate leave_;
  RunState run_;
  SideThread side_{run_};
};

TEST_F(SideThreadTest, MakesCallsOnAThreadOfItsOwn) {
  const auto caller = side_.ask([] { return std::this_thread::get_id(); });
  ASSERT_TRUE(caller);
  EXPECT_NE(*caller, std::this_thread::get_id());
}

TEST_F(SideThreadTest, AnswersEveryCall) {
  for (int time = 0; time < 20; ++time) {
    EXPECT_EQ(side_.ask([time] { return time; }), time);
    EXPECT_FALSE(side_.isBusy());
  }
}

TEST_F(SideThreadTest, ReleasesWhatACallHeld) {
  const auto held = std::make_shared<int>(1);
  EXPECT_EQ(side_.ask([held] { return *held; }), 1);
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(SideThreadTest, HasNoAnswerOfACallThatThrows) {
  EXPECT_EQ(side_.ask([]() -> int { throw std::runtime_error("no"); }), std::nullopt);
  EXPECT_FALSE(side_.isBusy());
  EXPECT_EQ(side_.ask([] { return 1; }), 1);
}

TEST_F(SideThreadTest, DoesNotBeginACallWhenAStopWasAskedFor) {
  stop();
  EXPECT_FALSE(side_.run([] { FAIL(); }));
}

TEST_F(SideThreadTest, StopsWaitingForACallWhenAStopIsAskedFor) {
  leaveCallBehind();
  EXPECT_TRUE(side_.isBusy());
  leave_.open();
  side_.finish();
  EXPECT_FALSE(side_.isBusy());
}

TEST_F(SideThreadTest, MakesTheNextCallWhenTheOneLeftBehindHasEnded) {
  leaveCallBehind();
  std::atomic<bool> called{false};
  support::LockWaiter next([&] { EXPECT_EQ(side_.ask([&] { return called = true; }), true); });
  EXPECT_TRUE(next.isHeldUp());
  EXPECT_FALSE(called);
  leave_.open();
  next.join();
  EXPECT_TRUE(called);
}

TEST_F(SideThreadTest, WaitsForTheCallWhenItIsDestroyed) {
  bool ended = false;
  {
    SideThread side(run_);
    side.run([&] { ended = true; });
  }
  EXPECT_TRUE(ended);
}

TEST_F(SideThreadTest, IsABackgroundThread) {
  EXPECT_EQ(side_.ask([] { return BackgroundThread::isCurrent(); }), true);
  EXPECT_FALSE(BackgroundThread::isCurrent());
}

TEST(BackgroundThread, StaysMarkedUntilTheOutermostMarkEnds) {
  {
    const BackgroundThread outer;
    { const BackgroundThread inner; }
    EXPECT_TRUE(BackgroundThread::isCurrent());
  }
  EXPECT_FALSE(BackgroundThread::isCurrent());
}

}  // namespace
}  // namespace download
