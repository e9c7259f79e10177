#include <gtest/gtest.h>

#include <thread>

#include "plugin/OperationLock.h"

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
  bool canBeTakenElsewhere() {
    return onAnotherThread([this] {
      if (!lock_.tryEnter()) return false;
      lock_.leaveQuietly();
      return true;
    });
  }

  EventCount events_;
  OperationLock lock_{events_};
};

TEST_F(OperationLockTest, IsHeldUntilTheLastOfItsHoldersScopesEnds) {
  {
    const OperationHold outer(lock_);
    { const OperationHold inner(lock_); }
    EXPECT_FALSE(canBeTakenElsewhere());
  }
  EXPECT_TRUE(canBeTakenElsewhere());
}

TEST_F(OperationLockTest, RaisesAnEventWhenItIsGivenBack) {
  const EventCount::Ticket ticket = events_.ticket();
  { const OperationHold hold(lock_); }
  EXPECT_NE(events_.ticket(), ticket);
}

TEST_F(OperationLockTest, RaisesNoneWhenItIsGivenBackQuietly) {
  const EventCount::Ticket ticket = events_.ticket();
  ASSERT_TRUE(lock_.tryEnter());
  lock_.leaveQuietly();
  EXPECT_EQ(events_.ticket(), ticket);
  EXPECT_TRUE(canBeTakenElsewhere());
}

TEST_F(OperationLockTest, KnowsWhetherTheCallerHoldsIt) {
  EXPECT_FALSE(lock_.isHeldByCaller());
  const OperationHold hold(lock_);
  EXPECT_TRUE(lock_.isHeldByCaller());
  EXPECT_FALSE(onAnotherThread([this] { return lock_.isHeldByCaller(); }));
}

TEST_F(OperationLockTest, AHoldByTryingCountsAsOne) {
  ASSERT_TRUE(lock_.tryEnter());
  EXPECT_TRUE(lock_.isHeldByCaller());
  lock_.leave();
  EXPECT_FALSE(lock_.isHeldByCaller());
}

}  // namespace
}  // namespace plugin
