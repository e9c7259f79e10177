#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "kvpm/Mutex.h"

namespace {

TEST(Mutex, OnlyOneThreadAtATimeHoldsIt) {
  kvpm::Mutex mutex;
  int counter = 0;  // a plain one: lost steps would show
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([&] {
      for (int step = 0; step < 10000; ++step) {
        const kvpm::MutexLock lock(mutex);
        ++counter;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, 40000);
}

TEST(Mutex, LockWaitsForTheHolder) {
  kvpm::Mutex mutex;
  std::atomic<bool> released{false};
  bool seen = false;
  mutex.lock();
  std::thread other([&] {
    mutex.lock();
    seen = released.load();
    mutex.unlock();
  });
  released = true;
  mutex.unlock();
  other.join();
  EXPECT_TRUE(seen);
}

}  // namespace
