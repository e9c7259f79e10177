// Threads that meet at one queue file.
#include <atomic>
#include <optional>
#include <thread>

#include "tests/support/LockWaiter.h"
#include "tests/unit/persistence/QueueFileFixture.h"

namespace persistence {
namespace {

using support::LockWaiter;

class QueueFileThreads : public QueueFileFixture {};

std::vector<Fields> queueOf(int count, const std::wstring& title) {
  return std::vector<Fields>(static_cast<std::size_t>(count), titled(title));
}

TEST_F(QueueFileThreads, EveryReadSeesOneWholeQueue) {
  const auto few = queueOf(3, L"few");
  const auto many = queueOf(50, L"many");
  written(few);
  std::atomic<int> broken = 0;
  const auto write = [&](const std::vector<Fields>& queue) {
    const Queue owned(queue);
    for (int i = 0; i < 50; ++i) {
      DownloadManagerPersistence::writeDownloadQueue(path(), owned.items());
    }
  };
  const auto readOften = [&] {
    for (int i = 0; i < 50; ++i) {
      const auto queue = read();
      if (queue != few && queue != many) ++broken;
    }
  };
  std::thread threads[] = {std::thread(write, few), std::thread(write, many),
                           std::thread(readOften), std::thread(readOften)};
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(broken, 0);
}

TEST_F(QueueFileThreads, AnUnreadableFileIsSetAsideOnce) {
  readOf("something else");
  std::thread threads[4];
  for (std::thread& thread : threads) thread = std::thread([&] { written({}); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(exists("downloadmanager.xml.unreadable"));
  EXPECT_FALSE(exists("downloadmanager.xml.unreadable.2"));
}

TEST_F(QueueFileThreads, AWriterWaitsForTheHolderOfTheLock) {
  std::optional<LockWaiter> writer;
  {
    const kvpm::CritLock lock(DownloadManagerPersistence::persistenceLock);
    writer.emplace([&] {
      DownloadManagerPersistence::writeDownloadQueue(path(), Queue({titled(L"one")}).items());
    });
    EXPECT_TRUE(writer->isHeldUp());
    EXPECT_TRUE(read().empty());  // the holder itself may still read
    EXPECT_FALSE(exists("downloadmanager.xml"));
  }
  writer->join();
  EXPECT_THAT(read(), testing::ElementsAre(titled(L"one")));
}

TEST_F(QueueFileThreads, ReadersWaitForTheHolderOfTheLock) {
  written({titled(L"old")});
  std::vector<Fields> readQueue;
  std::optional<LockWaiter> reader;
  {
    const kvpm::CritLock lock(DownloadManagerPersistence::persistenceLock);
    reader.emplace([&] { readQueue = read(); });
    EXPECT_TRUE(reader->isHeldUp());
    written({titled(L"new")});
  }
  reader->join();
  EXPECT_THAT(readQueue, testing::ElementsAre(titled(L"new")));
}

}  // namespace
}  // namespace persistence
