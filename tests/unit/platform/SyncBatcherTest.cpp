#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "playerx/platform/SyncBatcher.h"
#include "tests/support/Gate.h"
#include "tests/support/WaitFor.h"

namespace {

using namespace std::chrono_literals;
using playerx::SyncBatcher;
using support::Gate;
using support::waitFor;
using Files = SyncBatcher::Files;

constexpr auto kLong = 1h;  // nothing comes before a flush

/// Records what it was asked to sync, and can be blocked in the middle of it.
class Disk {
 public:
  SyncBatcher::Action action() {
    return [this](const Files& files) {
      {
        const std::lock_guard lock(mutex_);
        batches_.push_back(files);
        thread_ = std::this_thread::get_id();
      }
      began.open();
      if (slow) go.wait();
      ended = true;
    };
  }

  std::vector<Files> batches() const {
    const std::lock_guard lock(mutex_);
    return batches_;
  }
  /// The files of all batches.
  Files synced() const {
    Files all;
    for (const Files& batch : batches()) all.insert(batch.begin(), batch.end());
    return all;
  }
  std::thread::id thread() const {
    const std::lock_guard lock(mutex_);
    return thread_;
  }

  bool slow = false;
  std::atomic<bool> ended{false};
  Gate began;
  Gate go;

 private:
  mutable std::mutex mutex_;
  std::vector<Files> batches_;
  std::thread::id thread_;
};

TEST(SyncBatcher, SyncsByItselfAfterTheDelay) {
  Disk disk;
  SyncBatcher batcher(disk.action(), 1ms);
  batcher.request("/a");
  ASSERT_TRUE(waitFor([&] { return disk.batches().size() == 1; }));
  batcher.request("/b");
  ASSERT_TRUE(waitFor([&] { return disk.batches().size() == 2; }));
  EXPECT_EQ(disk.batches(), (std::vector<Files>{{"/a"}, {"/b"}}));
  EXPECT_NE(disk.thread(), std::this_thread::get_id());
}

TEST(SyncBatcher, SyncsLaterWhatThereIsNoMemoryFor) {
  Disk disk;
  std::atomic<int> tries = 0;
  SyncBatcher batcher(
      [&, sync = disk.action()](const Files& files) {
        if (++tries <= 2) throw std::bad_alloc();
        sync(files);
      },
      1ms);
  batcher.request("/a");
  ASSERT_TRUE(waitFor([&] { return !disk.batches().empty(); }));
  EXPECT_EQ(disk.batches(), (std::vector<Files>{{"/a"}}));
}

TEST(SyncBatcher, WithoutMemoryNothingWaitsForASyncForEver) {
  int tries = 0;
  SyncBatcher batcher(
      [&](const Files&) {
        ++tries;
        throw std::bad_alloc();
      },
      kLong);
  batcher.request("/a");
  batcher.flush();
  EXPECT_EQ(tries, 1);
  batcher.finish();
  EXPECT_EQ(tries, 2) << "what has failed is tried again at the end";
}

TEST(SyncBatcher, BatchesRequestsThatComeDuringTheDelay) {
  Disk disk;
  SyncBatcher batcher(disk.action(), kLong);
  for (int change = 0; change < 1000; ++change) batcher.request("/a");
  batcher.request("/b");
  EXPECT_TRUE(disk.batches().empty());
  batcher.flush();
  EXPECT_EQ(disk.batches(), (std::vector<Files>{{"/a", "/b"}}));
}

TEST(SyncBatcher, RequestsDoNotWaitForTheDisk) {
  Disk disk;
  disk.slow = true;
  SyncBatcher batcher(disk.action(), 0ms);
  batcher.request("/a");
  ASSERT_TRUE(disk.began.wait());
  batcher.request("/a");  // would hang here if the lock were held
  batcher.request("/b");
  disk.go.open();
  batcher.flush();
  EXPECT_EQ(disk.batches().front(), Files{"/a"});
  EXPECT_TRUE(disk.batches().back().contains("/b"));
}

TEST(SyncBatcher, FlushWaitsForASyncThatHasBegun) {
  Disk disk;
  disk.slow = true;
  SyncBatcher batcher(disk.action(), 0ms);
  batcher.request("/a");
  ASSERT_TRUE(disk.began.wait());
  bool endedFirst = false;
  std::thread flusher([&] {
    batcher.flush();
    endedFirst = disk.ended;
  });
  disk.go.open();
  flusher.join();
  EXPECT_TRUE(endedFirst);
  EXPECT_EQ(disk.batches().size(), 1U);
}

TEST(SyncBatcher, FlushWaitsForASyncThatTheFinishWaitsForToo) {
  Disk disk;
  disk.slow = true;
  SyncBatcher batcher(disk.action(), 0ms);
  batcher.request("/a");
  ASSERT_TRUE(disk.began.wait());
  std::thread finisher([&] { batcher.finish(); });
  bool endedFirst = false;
  std::thread flusher([&] {
    batcher.flush();
    endedFirst = disk.ended;
  });
  disk.go.open();
  finisher.join();
  flusher.join();
  EXPECT_TRUE(endedFirst);
}

TEST(SyncBatcher, FlushWithoutARequestReturns) {
  Disk disk;
  SyncBatcher batcher(disk.action(), kLong);
  batcher.flush();
  batcher.request("/a");
  batcher.flush();
  batcher.flush();
  EXPECT_EQ(disk.batches().size(), 1U);
}

TEST(SyncBatcher, FlushEndsEvenWhileRequestsContinue) {
  Disk disk;
  SyncBatcher batcher(disk.action(), 0ms);
  std::atomic<bool> enough{false};
  std::thread writer([&] {
    while (!enough) batcher.request("/a");
  });
  batcher.request("/b");
  batcher.flush();
  EXPECT_TRUE(disk.synced().contains("/b"));
  enough = true;
  writer.join();
}

TEST(SyncBatcher, ItsDestructorSyncsWhatIsLeft) {
  Disk disk;
  {
    SyncBatcher batcher(disk.action(), kLong);
    batcher.request("/a");
  }
  EXPECT_EQ(disk.batches(), (std::vector<Files>{{"/a"}}));
}

TEST(SyncBatcher, AfterItsFinishRequestsAreSyncedAtOnce) {
  Disk disk;
  SyncBatcher batcher(disk.action(), kLong);
  batcher.finish();
  batcher.request("/a");
  EXPECT_EQ(disk.batches(), (std::vector<Files>{{"/a"}}));
  EXPECT_EQ(disk.thread(), std::this_thread::get_id());
  batcher.finish();
  EXPECT_EQ(disk.batches().size(), 1U);
}

TEST(SyncBatcher, ManyThreadsMayRequestFlushAndFinish) {
  Disk disk;
  SyncBatcher batcher(disk.action(), 0ms);
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([&, number] {
      for (int change = 0; change < 200; ++change) {
        batcher.request("/" + std::to_string(number));
        if (change % 50 == 0) batcher.flush();
      }
      if (number == 0) batcher.finish();
    });
  }
  for (std::thread& thread : threads) thread.join();
  batcher.flush();
  EXPECT_EQ(disk.synced(), (Files{"/0", "/1", "/2", "/3"}));
}

TEST(SyncBatcher, AChildProcessLeavesTheWorkToItsParent) {
  Disk disk;
  SyncBatcher batcher(disk.action(), kLong);
  batcher.request("/a");
  const pid_t child = ::fork();
  if (child == 0) {
    ::alarm(30);  // instead of waiting for ever for a thread that it does not have
    batcher.finish();
    ::_exit(disk.batches().empty() ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(SyncBatcher, ItsThreadBlocksSignals) {
  sigset_t inside;
  sigemptyset(&inside);
  SyncBatcher batcher([&](const Files&) { pthread_sigmask(SIG_SETMASK, nullptr, &inside); }, 0ms);
  batcher.request("/a");
  batcher.flush();
  EXPECT_EQ(sigismember(&inside, SIGINT), 1);
  EXPECT_EQ(sigismember(&inside, SIGTERM), 1);
  sigset_t outside;
  pthread_sigmask(SIG_SETMASK, nullptr, &outside);
  EXPECT_EQ(sigismember(&outside, SIGINT), 0);
}

}  // namespace
