#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "kvpm/CritSection.h"

namespace {

// What another thread finds when it tries to enter.
bool otherThreadCanEnter(kvpm::CritSection& section) {
  bool entered = false;
  std::thread other([&] {
    entered = section.tryEnter();
    if (entered) section.leave();
  });
  other.join();
  return entered;
}

TEST(CritSection, AnyThreadMayEnterAFreeOne) {
  kvpm::CritSection section;
  EXPECT_TRUE(otherThreadCanEnter(section));
}

TEST(CritSection, TryEnterOfAnotherThreadFailsWhileItIsHeld) {
  kvpm::CritSection section;
  section.enter();
  EXPECT_FALSE(otherThreadCanEnter(section));
  section.leave();
  EXPECT_TRUE(otherThreadCanEnter(section));
}

TEST(CritSection, TheHolderEntersAgain) {
  kvpm::CritSection section;
  section.enter();
  section.enter();
  EXPECT_TRUE(section.tryEnter());
  section.leave();
  section.leave();
  EXPECT_FALSE(otherThreadCanEnter(section));
  section.leave();
  EXPECT_TRUE(otherThreadCanEnter(section));
}

TEST(CritSection, ASuccessfulTryEnterHoldsIt) {
  kvpm::CritSection section;
  ASSERT_TRUE(section.tryEnter());
  EXPECT_FALSE(otherThreadCanEnter(section));
  section.leave();
}

TEST(CritSection, AScopedLockHoldsItForItsScope) {
  kvpm::CritSection section;
  {
    const kvpm::CritLock lock(section);
    EXPECT_FALSE(otherThreadCanEnter(section));
  }
  EXPECT_TRUE(otherThreadCanEnter(section));
}

TEST(CritSection, OnlyOneThreadAtATimeHoldsIt) {
  kvpm::CritSection section;
  int counter = 0;
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([&] {
      for (int step = 0; step < 5000; ++step) {
        const kvpm::CritLock lock(section);
        const kvpm::CritLock again(section);
        ++counter;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, 20000);
}

TEST(CritSection, EnterWaitsForTheHolder) {
  kvpm::CritSection section;
  std::atomic<bool> released{false};
  bool seen = false;
  section.enter();
  std::thread other([&] {
    section.enter();
    seen = released.load();
    section.leave();
  });
  released = true;
  section.leave();
  other.join();
  EXPECT_TRUE(seen);
}

}  // namespace
