#include <gtest/gtest.h>

#include <thread>

#include "download/BackgroundThread.h"
#include "plugin/OperationLock.h"
#include "tests/support/LockWaiter.h"

namespace plugin {
namespace {

template <class F>
auto onAnotherThread(F action) {
  decltype(action()) answer{};
  std::thread thread([&] { answer = action(); });
  thread.join();
  return answer;
}

class OperationLockTest : public ::testing::Test {
 protected:
  void enter() KVPM_NO_ANALYSIS { ASSERT_TRUE(lock_.enter()); }
  void leave() KVPM_NO_ANALYSIS { lock_.leave(); }

  bool canBeTakenElsewhere() {
    return onAnotherThread([this] { return tryOnce(); });
  }

  /// Enters on a background thread and leaves; false where it gave way.
  bool enterInBackground() {
    const download::BackgroundThread mark;
    if (!lock_.enter()) return false;
    lock_.leave();
    return true;
  }

  EventCount events_;
  OperationLock lock_{events_};

 private:
  bool tryOnce() {
    if (!lock_.tryEnter()) return false;
    lock_.leaveQuietly();
    return true;
  }
};

TEST_F(OperationLockTest, IsHeldUntilItWasLeftAsOftenAsEntered) {
  enter();
  enter();
  leave();
  EXPECT_FALSE(canBeTakenElsewhere());
  leave();
  EXPECT_TRUE(canBeTakenElsewhere());
}

TEST_F(OperationLockTest, RaisesAnEventWhenItIsFreeAgain) {
  const EventCount::Key key = events_.key();
  enter();
  enter();
  leave();
  EXPECT_EQ(events_.key(), key) << "not yet";
  leave();
  EXPECT_NE(events_.key(), key);
}

TEST_F(OperationLockTest, RaisesNoneWhenItIsGivenBackQuietly) {
  const EventCount::Key key = events_.key();
  ASSERT_TRUE(lock_.tryEnter());
  lock_.leaveQuietly();
  EXPECT_EQ(events_.key(), key);
  EXPECT_TRUE(canBeTakenElsewhere());
}

TEST_F(OperationLockTest, KnowsWhetherTheCallerHoldsIt) {
  EXPECT_FALSE(lock_.isHeldByCaller());
  enter();
  EXPECT_TRUE(lock_.isHeldByCaller());
  EXPECT_FALSE(onAnotherThread([this] { return lock_.isHeldByCaller(); }));
  leave();
  EXPECT_FALSE(lock_.isHeldByCaller());
}

TEST_F(OperationLockTest, IsWaitedForWhileAnotherThreadHoldsIt) {
  enter();
  support::LockWaiter host([this] {
    enter();
    leave();
  });
  EXPECT_TRUE(host.isHeldUp());
  leave();
  host.join();
}

TEST_F(OperationLockTest, IsWaitedForInTheBackgroundWhileNobodyWaitsForTheBackground) {
  enter();
  bool entered = false;
  support::LockWaiter background([&] { entered = enterInBackground(); });
  EXPECT_TRUE(background.isHeldUp());
  leave();
  background.join();
  EXPECT_TRUE(entered);
}

TEST_F(OperationLockTest, ABackgroundThreadGivesWayAsSoonAsItIsWaitedFor) {
  enter();
  bool entered = true;
  support::LockWaiter background([&] { entered = enterInBackground(); });
  EXPECT_TRUE(background.isHeldUp());
  const OperationLock::WaitForBackground wait(lock_);
  background.join();
  EXPECT_FALSE(entered);
  leave();
}

TEST_F(OperationLockTest, ABackgroundThreadThatIsWaitedForStillTakesAFreeLock) {
  const OperationLock::WaitForBackground wait(lock_);
  EXPECT_TRUE(onAnotherThread([this] { return enterInBackground(); }));
}

TEST_F(OperationLockTest, KnowsWhetherTheBackgroundIsWaitedFor) {
  const EventCount::Key key = events_.key();
  EXPECT_FALSE(lock_.isBackgroundAwaited());
  {
    const OperationLock::WaitForBackground wait(lock_);
    EXPECT_TRUE(lock_.isBackgroundAwaited());
    EXPECT_NE(events_.key(), key);
  }
  EXPECT_FALSE(lock_.isBackgroundAwaited());
}

}  // namespace
}  // namespace plugin
