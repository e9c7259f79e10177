#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "playerx/platform/FileSyncer.h"
#include "tests/support/Gate.h"
#include "tests/support/WaitFor.h"

namespace {

using namespace std::chrono_literals;
using playerx::FileSyncer;
using support::Gate;
using support::waitFor;
using Files = FileSyncer::Files;

constexpr auto kLong = 1h;  // nothing comes before a flush

/// Remembers what it was asked to sync, and can be held up in the middle of it.
class Disk {
 public:
  FileSyncer::Action action() {
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

TEST(FileSyncer, SyncsByItselfOnceTheGatheringIsOver) {
  Disk disk;
  FileSyncer syncer(disk.action(), 1ms);
  syncer.request("/a");
  ASSERT_TRUE(waitFor([&] { return disk.batches().size() == 1; }));
  syncer.request("/b");
  ASSERT_TRUE(waitFor([&] { return disk.batches().size() == 2; }));
  EXPECT_EQ(disk.batches(), (std::vector<Files>{{"/a"}, {"/b"}}));
  EXPECT_NE(disk.thread(), std::this_thread::get_id());
}

TEST(FileSyncer, GathersWhatComesMeanwhile) {
  Disk disk;
  FileSyncer syncer(disk.action(), kLong);
  for (int change = 0; change < 1000; ++change) syncer.request("/a");
  syncer.request("/b");
  EXPECT_TRUE(disk.batches().empty());
  syncer.flush();
  EXPECT_EQ(disk.batches(), (std::vector<Files>{{"/a", "/b"}}));
}

TEST(FileSyncer, RequestsDoNotWaitForTheDisk) {
  Disk disk;
  disk.slow = true;
  FileSyncer syncer(disk.action(), 0ms);
  syncer.request("/a");
  ASSERT_TRUE(disk.began.wait());
  syncer.request("/a");  // would hang here if the lock were held
  syncer.request("/b");
  disk.go.open();
  syncer.flush();
  EXPECT_EQ(disk.batches().front(), Files{"/a"});
  EXPECT_TRUE(disk.batches().back().contains("/b"));
}

TEST(FileSyncer, FlushWaitsForASyncThatHasBegun) {
  Disk disk;
  disk.slow = true;
  FileSyncer syncer(disk.action(), 0ms);
  syncer.request("/a");
  ASSERT_TRUE(disk.began.wait());
  bool endedFirst = false;
  std::thread flusher([&] {
    syncer.flush();
    endedFirst = disk.ended;
  });
  disk.go.open();
  flusher.join();
  EXPECT_TRUE(endedFirst);
  EXPECT_EQ(disk.batches().size(), 1U);
}

TEST(FileSyncer, FlushWaitsForASyncThatTheFinishWaitsForToo) {
  Disk disk;
  disk.slow = true;
  FileSyncer syncer(disk.action(), 0ms);
  syncer.request("/a");
  ASSERT_TRUE(disk.began.wait());
  std::thread finisher([&] { syncer.finish(); });
  bool endedFirst = false;
  std::thread flusher([&] {
    syncer.flush();
    endedFirst = disk.ended;
  });
  disk.go.open();
  finisher.join();
  flusher.join();
  EXPECT_TRUE(endedFirst);
}

TEST(FileSyncer, FlushWithoutARequestReturns) {
  Disk disk;
  FileSyncer syncer(disk.action(), kLong);
  syncer.flush();
  syncer.request("/a");
  syncer.flush();
  syncer.flush();
  EXPECT_EQ(disk.batches().size(), 1U);
}

TEST(FileSyncer, FlushEndsThoughRequestsGoOn) {
  Disk disk;
  FileSyncer syncer(disk.action(), 0ms);
  std::atomic<bool> enough{false};
  std::thread writer([&] {
    while (!enough) syncer.request("/a");
  });
  syncer.request("/b");
  syncer.flush();
  enough = true;
  writer.join();
}

TEST(FileSyncer, ItsEndSyncsWhatIsLeft) {
  Disk disk;
  {
    FileSyncer syncer(disk.action(), kLong);
    syncer.request("/a");
  }
  EXPECT_EQ(disk.batches(), (std::vector<Files>{{"/a"}}));
}

TEST(FileSyncer, AfterItsFinishRequestsAreDoneAtOnce) {
  Disk disk;
  FileSyncer syncer(disk.action(), kLong);
  syncer.finish();
  syncer.request("/a");
  EXPECT_EQ(disk.batches(), (std::vector<Files>{{"/a"}}));
  EXPECT_EQ(disk.thread(), std::this_thread::get_id());
  syncer.finish();
  EXPECT_EQ(disk.batches().size(), 1U);
}

TEST(FileSyncer, ManyThreadsMayRequestFlushAndFinish) {
  Disk disk;
  FileSyncer syncer(disk.action(), 0ms);
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([&, number] {
      for (int change = 0; change < 200; ++change) {
        syncer.request("/" + std::to_string(number));
        if (change % 50 == 0) syncer.flush();
      }
      if (number == 0) syncer.finish();
    });
  }
  for (std::thread& thread : threads) thread.join();
  syncer.flush();
  Files seen;
  for (const Files& batch : disk.batches()) seen.insert(batch.begin(), batch.end());
  EXPECT_EQ(seen, (Files{"/0", "/1", "/2", "/3"}));
}

TEST(FileSyncer, AChildProcessLeavesTheWorkToItsParent) {
  Disk disk;
  FileSyncer syncer(disk.action(), kLong);
  syncer.request("/a");
  const pid_t child = ::fork();
  if (child == 0) {
    ::alarm(30);  // instead of waiting for ever for a thread that it does not have
    syncer.finish();
    ::_exit(disk.batches().empty() ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(FileSyncer, ItsThreadTakesNoSignals) {
  sigset_t inside;
  sigemptyset(&inside);
  FileSyncer syncer([&](const Files&) { pthread_sigmask(SIG_SETMASK, nullptr, &inside); }, 0ms);
  syncer.request("/a");
  syncer.flush();
  EXPECT_EQ(sigismember(&inside, SIGINT), 1);
  EXPECT_EQ(sigismember(&inside, SIGTERM), 1);
  sigset_t outside;
  pthread_sigmask(SIG_SETMASK, nullptr, &outside);
  EXPECT_EQ(sigismember(&outside, SIGINT), 0);
}

}  // namespace
