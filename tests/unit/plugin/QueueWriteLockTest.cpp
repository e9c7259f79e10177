#include <functional>
#include <optional>

#include "persistence/DownloadManagerPersistence.h"
#include "tests/support/LockWaiter.h"
#include "tests/unit/plugin/ManagerFixture.h"

namespace {

using support::LockWaiter;

class QueueWriteLockTest : public ManagerFixture {
 protected:
  void SetUp() override { startAsleep("A1 B1"); }

  /// Whether other threads wait for the queue while `change` waits to write it.
  bool isLockedWhile(const std::function<void()>& change) {
    std::optional<LockWaiter> writer;
    std::optional<LockWaiter> reader;
    const kvpm::CritLock lock(DownloadManagerPersistence::persistenceLock);
    writer.emplace(change);
    if (!writer->isHeldUp()) return false;
    reader.emplace([this] { queue(); });
    return reader->isHeldUp();
  }
};

TEST_F(QueueWriteLockTest, TheQueueIsLockedWhileItIsWritten) {
  const unsigned int a = id("A");
  EXPECT_TRUE(isLockedWhile([&] { manager().updateSize(a, 5); }));
  EXPECT_TRUE(isLockedWhile([&] { manager().moveDown(a); }));
  EXPECT_EQ(queue(), "B1 A1");
  EXPECT_EQ(written(), "B1 A1");
}

}  // namespace
