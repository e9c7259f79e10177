#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <optional>

#include "tests/support/LockWaiter.h"

namespace support {
namespace {

TEST(LockWaiter, IsHeldUpAsLongAsTheLockIsHeld) {
  std::mutex mutex;
  std::atomic<bool> entered = false;
  std::optional<LockWaiter> waiter;
  {
    const std::lock_guard lock(mutex);
    waiter.emplace([&] {
      const std::lock_guard inner(mutex);
      entered = true;
    });
    EXPECT_TRUE(waiter->isHeldUp());
    EXPECT_FALSE(entered);
  }
  waiter->join();
  EXPECT_TRUE(entered);
}

TEST(LockWaiter, IsNotHeldUpByWorkThatTakesNoLock) {
  const LockWaiter waiter([] {});
  EXPECT_FALSE(waiter.isHeldUp());
}

}  // namespace
}  // namespace support
