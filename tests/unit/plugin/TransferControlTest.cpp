#include "download/BackgroundThread.h"
#include "tests/unit/plugin/PartsFixture.h"

namespace plugin {
namespace {

class TransferControlTest : public PartsFixture {
 protected:
  /// The item at the top is being downloaded and fails, as the worker reports it.
  void failFirst() {
    locked([this] { prepare(id(0)); });
    queue_.change(id(0), [](auto& item) { item.setStatus(DownloadStatusFailed); });
  }

  void prepare(unsigned int id) KVPM_NO_ANALYSIS { transfers_.prepare(id); }
  bool finish() KVPM_NO_ANALYSIS { return transfers_.finish(); }
  void requeue(unsigned int id) KVPM_NO_ANALYSIS { transfers_.setStatus(id, DownloadStatusQueued); }
};

TEST_F(TransferControlTest, PausingStopsTheTransferThenParksTheQueue) {
  given("A3 B1 C2 D4");
  transfers_.pause();
  EXPECT_EQ(text(), "A0 B1 C1 D4");
  EXPECT_TRUE(transfers_.isPaused());
  EXPECT_EQ(log_.lines(), (Lines{"worker.stopDownload 0", "worker.stop", "view.listChanged"}));
}

TEST_F(TransferControlTest, PausingStopsTheSessionOfAHeldItem) {
  given("A1 B7");
  queue_.change(id(1), [](auto& item) { item.setUID(8); });
  transfers_.pause();
  EXPECT_EQ(log_.lines("worker."), (Lines{"worker.stop", "worker.stopDownload 8"}));
  EXPECT_EQ(text(), "A1 B0");
}

TEST_F(TransferControlTest, ResumingQueuesWhatWasParked) {
  given("A3 B1");
  transfers_.pause();
  transfers_.resume();
  EXPECT_EQ(text(), "A1 B1");
  EXPECT_FALSE(transfers_.isPaused());
}

TEST_F(TransferControlTest, CancellingStopsTheSessionOfAnActiveHeadOnly) {
  struct {
    const char* queue;
    bool stopsSession;
  } const cases[] = {{"A1", false}, {"A2", true}, {"A3", true}, {"A7", true}, {"A4", false}};
  for (const auto& one : cases) {
    given(one.queue);
    log_.clear();
    transfers_.cancel();
    EXPECT_EQ(log_.count("worker.stopDownload 0"), one.stopsSession ? 1U : 0U) << one.queue;
    EXPECT_EQ(log_.count("worker.stop"), 1U) << one.queue;
    EXPECT_EQ(text(), one.queue);
  }
}

TEST_F(TransferControlTest, CancellingTellsTheBackgroundThatItWaits) {
  given("A3");
  EXPECT_FALSE(lock_.isBackgroundAwaited());
  bool awaited = false;
  class Watching : public FakeWorker {
   public:
    Watching(support::EventLog& log, std::function<void()> look)
        : FakeWorker(log), look_(std::move(look)) {}
    void stop() override { look_(); }

   private:
    const std::function<void()> look_;
  } worker(log_, [&] { awaited = lock_.isBackgroundAwaited(); });
  TransferControl(queue_, lock_, worker).cancel();
  EXPECT_TRUE(awaited);
  EXPECT_FALSE(lock_.isBackgroundAwaited());
}

TEST_F(TransferControlTest, AFailureCountsUnlessTheItemWasQueuedAnewSince) {
  given("A1");
  failFirst();
  EXPECT_TRUE(locked([this] { return finish(); }));
  failFirst();
  locked([this] { requeue(id(0)); });
  EXPECT_FALSE(locked([this] { return finish(); }));
  EXPECT_EQ(text(), "A1");
}

TEST_F(TransferControlTest, KnowsWhoseTransferRuns) {
  given("A1");
  EXPECT_FALSE(transfers_.isRunning(id(0)));
  locked([this] { prepare(id(0)); });
  EXPECT_TRUE(transfers_.isRunning(id(0)));
  EXPECT_FALSE(transfers_.isRunning(0));
  locked([this] { finish(); });
  EXPECT_FALSE(transfers_.isRunning(id(0)));
}

TEST_F(TransferControlTest, AChangeOfTheHeadCountsAsAPauseWhileItLasts) {
  locked([this] {
    const TransferControl::HeadChange change(transfers_, true);
    EXPECT_TRUE(change.isActive());
    EXPECT_TRUE(transfers_.isPaused());
    EXPECT_FALSE(transfers_.isPausedByUser());
    const TransferControl::HeadChange inner(transfers_, true);
    EXPECT_FALSE(inner.isActive());
  });
  EXPECT_FALSE(transfers_.isPaused());
}

TEST_F(TransferControlTest, GivesWayInTheBackgroundWhileTheHostWaits) {
  given("A3");
  ASSERT_TRUE(lock_.tryEnter());
  std::thread other([this] {
    const download::BackgroundThread mark;
    transfers_.pause();
    transfers_.cancel();
    transfers_.resume();
  });
  {
    const OperationLock::WaitForBackground wait(lock_);
    other.join();
  }
  lock_.leave();
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_FALSE(transfers_.isPaused());
}

}  // namespace
}  // namespace plugin
