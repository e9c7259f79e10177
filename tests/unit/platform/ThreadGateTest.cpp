#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <vector>

#include "kvpm/IRunnable.h"
#include "kvpm/Thread.h"
#include "playerx/platform/ThreadGate.h"
#include "tests/support/Gate.h"
#include "tests/support/WaitFor.h"

namespace {

using playerx::ThreadGate;
using support::waitFor;

class Counting : public kvpm::IRunnable {
 public:
  void runThread(kvpm::Thread* /*thread*/) override { ++entered; }
  std::atomic<int> entered{0};
};

class ThreadGateTest : public testing::Test {
 protected:
  ThreadGateTest() { ThreadGate::close(); }
  ~ThreadGateTest() override { ThreadGate::open(); }

  Counting body;
};

TEST(ThreadGate, IsOpenAtTheBeginning) { EXPECT_TRUE(ThreadGate::isOpen()); }

TEST_F(ThreadGateTest, KnowsThatItIsClosed) {
  EXPECT_FALSE(ThreadGate::isOpen());
  ThreadGate::open();
  EXPECT_TRUE(ThreadGate::isOpen());
}

TEST_F(ThreadGateTest, AWaitingThreadCountsAsRunning) {
  kvpm::Thread thread(&body);
  ASSERT_TRUE(thread.start());
  EXPECT_TRUE(thread.isRunning());
  EXPECT_FALSE(thread.start());
  EXPECT_EQ(body.entered, 0);
}

TEST_F(ThreadGateTest, OpeningReleasesAllThreads) {
  std::vector<std::unique_ptr<kvpm::Thread>> threads;
  for (int number = 0; number < 3; ++number) {
    threads.push_back(std::make_unique<kvpm::Thread>(&body));
    ASSERT_TRUE(threads.back()->start());
  }
  ThreadGate::open();
  EXPECT_TRUE(waitFor([&] { return body.entered == 3; }));
}

TEST_F(ThreadGateTest, AStoppedThreadEndsWithoutItsBody) {
  kvpm::Thread thread(&body);
  ASSERT_TRUE(thread.start());
  thread.stop();
  ASSERT_TRUE(waitFor([&] { return !thread.isRunning(); }));
  ThreadGate::open();
  EXPECT_EQ(body.entered, 0);
}

TEST_F(ThreadGateTest, ADestroyedThreadEndsWithoutItsBody) {
  {
    kvpm::Thread thread(&body);
    ASSERT_TRUE(thread.start());
  }
  EXPECT_EQ(body.entered, 0);
}

TEST_F(ThreadGateTest, AThreadStoppedWhileWaitingCanBeStartedAgain) {
  kvpm::Thread thread(&body);
  ASSERT_TRUE(thread.start());
  thread.stop();
  ASSERT_TRUE(waitFor([&] { return !thread.isRunning(); }));
  ThreadGate::open();
  ASSERT_TRUE(thread.start());
  EXPECT_TRUE(waitFor([&] { return body.entered == 1; }));
}

TEST_F(ThreadGateTest, ABodyAlreadyEnteredIsNotHeldBack) {
  ThreadGate::open();
  class Asking : public kvpm::IRunnable {
   public:
    void runThread(kvpm::Thread* thread) override {
      entered.open();
      go.wait();
      askedToStop = thread->shouldStop();
    }
    support::Gate entered;
    support::Gate go;
    std::atomic<bool> askedToStop{true};
  } asking;
  kvpm::Thread thread(&asking);
  ASSERT_TRUE(thread.start());
  ASSERT_TRUE(asking.entered.wait());
  ThreadGate::close();
  asking.go.open();
  ASSERT_TRUE(waitFor([&] { return !thread.isRunning(); }));
  EXPECT_FALSE(asking.askedToStop);
}

}  // namespace
