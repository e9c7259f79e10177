#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "kvpm/IRunnable.h"
#include "kvpm/Thread.h"
#include "tests/support/Gate.h"
#include "tests/support/WaitFor.h"

namespace {

using support::Gate;
using support::waitFor;

class Body : public kvpm::IRunnable {
 public:
  explicit Body(std::function<void(kvpm::Thread*)> work) : work_(std::move(work)) {}
  void runThread(kvpm::Thread* thread) override { work_(thread); }

 private:
  std::function<void(kvpm::Thread*)> work_;
};

// Works until it is asked to stop.
class Obedient : public kvpm::IRunnable {
 public:
  void runThread(kvpm::Thread* thread) override {
    entered.open();
    while (!thread->shouldStop()) std::this_thread::yield();
    left = true;
  }

  Gate entered;
  std::atomic<bool> left{false};
};

// Asks for stacks of an impossible size, so that no thread starts during its lifetime.
class NoThreads {
 public:
  NoThreads() {
    pthread_getattr_default_np(&before_);
    pthread_attr_t huge;
    pthread_attr_init(&huge);
    pthread_attr_setstacksize(&huge, std::size_t{1} << 47U);
    pthread_setattr_default_np(&huge);
    pthread_attr_destroy(&huge);
  }
  ~NoThreads() {
    pthread_setattr_default_np(&before_);
    pthread_attr_destroy(&before_);
  }

 private:
  pthread_attr_t before_;
};

TEST(Thread, IsNotStartedByItsConstruction) {
  bool ran = false;
  {
    Body body([&](kvpm::Thread*) { ran = true; });
    const kvpm::Thread thread(&body);
    EXPECT_FALSE(thread.isRunning());
    EXPECT_FALSE(thread.shouldStop());
  }
  EXPECT_FALSE(ran);
}

TEST(Thread, RunsTheBodyOnAnotherThreadAndPassesItself) {
  kvpm::Thread* handed = nullptr;
  std::thread::id id;
  Body body([&](kvpm::Thread* self) {
    handed = self;
    id = std::this_thread::get_id();
  });
  kvpm::Thread thread(&body);
  ASSERT_TRUE(thread.start());
  ASSERT_TRUE(waitFor([&] { return !thread.isRunning(); }));
  EXPECT_EQ(handed, &thread);
  EXPECT_NE(id, std::this_thread::get_id());
}

TEST(Thread, IsRunningFromStartUntilTheBodyReturns) {
  Gate go;
  bool runningInside = false;
  Body body([&](kvpm::Thread* self) {
    go.wait();
    runningInside = self->isRunning();
  });
  kvpm::Thread thread(&body);
  ASSERT_TRUE(thread.start());
  EXPECT_TRUE(thread.isRunning());
  go.open();
  ASSERT_TRUE(waitFor([&] { return !thread.isRunning(); }));
  EXPECT_TRUE(runningInside);
}

TEST(Thread, WhatTheBodyDidIsSeenOnceItIsNotRunning) {
  int plain = 0;  // not synchronised by anything but the answer
  Body body([&](kvpm::Thread*) { ++plain; });
  kvpm::Thread thread(&body);
  for (int round = 1; round <= 200; ++round) {
    ASSERT_TRUE(thread.start());
    while (thread.isRunning()) std::this_thread::yield();
    ASSERT_EQ(plain, round);
  }
}

TEST(Thread, StartWhileRunningIsRefusedAndChangesNothing) {
  Obedient body;
  kvpm::Thread thread(&body);
  ASSERT_TRUE(thread.start());
  EXPECT_FALSE(thread.start());
  EXPECT_FALSE(thread.shouldStop());
  ASSERT_TRUE(body.entered.wait());
  thread.stop();
  ASSERT_TRUE(waitFor([&] { return !thread.isRunning(); }));
}

TEST(Thread, StartFromWithinTheBodyIsRefused) {
  bool started = true;
  Body body([&](kvpm::Thread* self) { started = self->start(); });
  kvpm::Thread thread(&body);
  ASSERT_TRUE(thread.start());
  ASSERT_TRUE(waitFor([&] { return !thread.isRunning(); }));
  EXPECT_FALSE(started);
}

TEST(Thread, StopOnlyAsks) {
  Gate go;
  Body body([&](kvpm::Thread*) { go.wait(); });
  kvpm::Thread thread(&body);
  ASSERT_TRUE(thread.start());
  thread.stop();
  EXPECT_TRUE(thread.shouldStop());
  EXPECT_TRUE(thread.isRunning());
  go.open();
}

TEST(Thread, StartRevokesAnEarlierStop) {
  Gate go;
  bool asked = true;
  Body body([&](kvpm::Thread* self) {
    asked = self->shouldStop();
    go.wait();
  });
  kvpm::Thread thread(&body);
  thread.stop();
  EXPECT_TRUE(thread.shouldStop());
  ASSERT_TRUE(thread.start());
  EXPECT_FALSE(thread.shouldStop());
  go.open();
  ASSERT_TRUE(waitFor([&] { return !thread.isRunning(); }));
  EXPECT_FALSE(asked);
}

TEST(Thread, ShouldStopStaysTrueAfterTheEnd) {
  Obedient body;
  kvpm::Thread thread(&body);
  ASSERT_TRUE(thread.start());
  thread.stop();
  ASSERT_TRUE(waitFor([&] { return !thread.isRunning(); }));
  EXPECT_TRUE(thread.shouldStop());
}

TEST(Thread, TheDestructorStopsTheBodyAndWaitsForIt) {
  Obedient body;
  {
    kvpm::Thread thread(&body);
    ASSERT_TRUE(thread.start());
    ASSERT_TRUE(body.entered.wait());
  }
  EXPECT_TRUE(body.left);
}

TEST(Thread, ManyThreadsMayAskAndStop) {
  Obedient body;
  kvpm::Thread thread(&body);
  ASSERT_TRUE(thread.start());
  std::vector<std::thread> others;
  for (int number = 0; number < 4; ++number) {
    others.emplace_back([&] {
      while (thread.isRunning()) thread.stop();
    });
  }
  for (std::thread& other : others) other.join();
  EXPECT_TRUE(body.left);
}

TEST(Thread, StartFailsWhenTheSystemCannotCreateAThread) {
  bool ran = false;
  Body body([&](kvpm::Thread*) { ran = true; });
  kvpm::Thread thread(&body);
  thread.stop();
  {
    const NoThreads none;
    EXPECT_FALSE(thread.start());
  }
  EXPECT_FALSE(thread.isRunning());
  EXPECT_TRUE(thread.shouldStop());
  EXPECT_TRUE(thread.start());
  ASSERT_TRUE(waitFor([&] { return !thread.isRunning(); }));
  EXPECT_TRUE(ran);
}

}  // namespace
