#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "KPX/KPXPreferences.h"
#include "playerx/platform/ThreadGate.h"
#include "tests/support/Gate.h"
#include "tests/support/LockWaiter.h"
#include "tests/unit/plugin/ManagerFixture.h"

namespace {

using Lines = std::vector<std::string>;

std::ptrdiff_t threadCount() {
  namespace fs = std::filesystem;
  return std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator());
}

class ShutdownTest : public ManagerFixture {
 protected:
  /// With a download under way and nothing in the log.
  unsigned long long beginDownload(const std::string& queue) {
    startAsleep(queue);
    wakeScheduler();
    const auto uid = transferOf("A");
    // The last notices of a start: the item is starting, the item is downloading.
    log_.waitFor("view.keepsRunning", 2);
    log_.clear();
    return uid;
  }

  /// At the next notice that the view is given on the test's own thread.
  void onNotice(const std::function<void()>& action) {
    view_.onEvent([this, action, host = std::this_thread::get_id()](const std::string&) {
      if (std::this_thread::get_id() != host) return;
      view_.onEvent({});
      action();
      noticed_ = true;
    });
  }

  bool noticed_ = false;
};

TEST_F(ShutdownTest, StopsTheTransferAndEndsEveryThread) {
  given("");  // the platform has a thread of its own for writing from here on
  const std::ptrdiff_t before = threadCount();
  const auto uid = beginDownload("A1 B1");
  EXPECT_GT(threadCount(), before);
  manager().Shutdown();
  EXPECT_EQ(threadCount(), before);
  const Uids stopped = stoppedSessions();
  EXPECT_NE(std::find(stopped.begin(), stopped.end(), uid), stopped.end());
}

TEST_F(ShutdownTest, StopsAHeldTransferBelowTheFirstItem) {
  library_.complete(beginDownload("A1 B6 C6"));
  await("B6 C6 A4");
  item("C").setUID(42);
  manager().updateStatus(id("C"), DownloadStatusHeld);
  shutDown();
  const Uids stopped = stoppedSessions();
  EXPECT_NE(std::find(stopped.begin(), stopped.end(), 42U), stopped.end());
}

TEST_F(ShutdownTest, LeavesNoReceiverAtTheLibrary) {
  const auto uid = beginDownload("A1");
  manager().Shutdown();
  EXPECT_FALSE(library_.hasCallback());
  library_.complete(uid);
}

TEST_F(ShutdownTest, WritesAndTellsNothing) {
  beginDownload("A1 B1");
  const std::string before = support::readFile(queueFile());
  manager().Shutdown();
  EXPECT_TRUE(log_.lines("view.").empty());
  EXPECT_EQ(support::readFile(queueFile()), before);
  EXPECT_EQ(written(), "A3 B1");
}

TEST_F(ShutdownTest, ReleasesThePluginsThatTheManagerUsed) {
  beginDownload("A1");
  manager().setTicketId(id("A"), 7);
  manager().updateDownloadProgress(id("A"), 50);
  ASSERT_EQ(log_.lines("services.confirm").size(), 1U);
  EXPECT_EQ(context_.holds("com.vesk.playback.interface.Download"), 1);
  EXPECT_GE(context_.holds("com.vesk.playerX.pluginInterface.ZPSServices"), 1);
  manager().Shutdown();
  EXPECT_EQ(context_.holds("com.vesk.playback.interface.Download"), 0);
  EXPECT_EQ(context_.holds("com.vesk.playerX.pluginInterface.ZPSServices"), 0);
}

TEST_F(ShutdownTest, ASecondTimeChangesNothing) {
  startAsleep("A1");
  manager().kpimRetain();
  manager().Shutdown();
  const int holds = manager().kpimHoldCount();
  manager().Shutdown();
  EXPECT_EQ(manager().kpimHoldCount(), holds);
  manager().kpimRelease();
}

TEST_F(ShutdownTest, DestructionAfterwardsDoesNothingMore) {
  beginDownload("A1 B1");
  manager().Shutdown();
  log_.clear();
  forgetFile();
  const Uids stopped = library_.stopped();
  shutDown();
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_FALSE(isWritten());
  EXPECT_EQ(library_.stopped(), stopped);
}

TEST_F(ShutdownTest, MayReleaseTheLastReference) {
  struct Watched : DownloadManager {
    Watched(KPIM::Context* context, bool& gone) : DownloadManager(context), gone_(gone) {}
    ~Watched() override { gone_ = true; }
    bool& gone_;
  };
  given("A1");
  bool gone = false;
  playerx::ThreadGate::close();  // no thread may use it before it is fully built
  auto* const watched = new Watched(&context_, gone);
  playerx::ThreadGate::open();
  transferOf("A");
  EXPECT_EQ(watched->kpimRelease(), 1);
  EXPECT_FALSE(gone);
  watched->Shutdown();
  EXPECT_TRUE(gone);
  EXPECT_FALSE(library_.hasCallback());
}

TEST_F(ShutdownTest, OperationsAfterwardsAnswerNothing) {
  startAsleep("A1");
  const unsigned int a = id("A");
  manager().Shutdown();
  EXPECT_EQ(manager().getCopyofQueue(), nullptr);
  EXPECT_EQ(manager().getNumberOfVideosInQueue(), 0U);
  EXPECT_EQ(manager().add(L"http://h/b.avi", L"", L""), nullptr);
  EXPECT_TRUE(manager().addTicket(L"/b.tix", false).empty());
  EXPECT_EQ(manager().get(a), nullptr);
  EXPECT_EQ(manager().get(L"x"), nullptr);
  EXPECT_EQ(manager().at(0), nullptr);
  EXPECT_EQ(manager().getByTicket("x"), nullptr);
  EXPECT_EQ(manager().getByPath(L"x"), nullptr);
  EXPECT_FALSE(manager().updateStatus(a, DownloadStatusPaused));
  EXPECT_FALSE(manager().play(a));
  EXPECT_FALSE(manager().moveUp(a));
  EXPECT_FALSE(manager().remove(a));
  EXPECT_FALSE(manager().isPaused());
  manager().setViewInterface(&view_);
  manager().pause();
  manager().resume();
  manager().retry(a);
  manager().zpsFileOpenedForPlayback(L"x", nullptr, nullptr);
}

TEST_F(ShutdownTest, TheNextStartGoesOnWithWhatWasWritten) {
  beginDownload("A1 B6");
  shutDown();
  start();
  transferOf("A");
  await("A3 B6");
}

TEST_F(ShutdownTest, MayComeFromTheViewInTheMiddleOfAnOperation) {
  beginDownload("A1 B1");
  onNotice([this] { shutDown(); });
  manager().remove(id("B"));
  EXPECT_TRUE(noticed_);
}

TEST_F(ShutdownTest, MayComeFromTheViewInTheMiddleOfAMoveOfTheHead) {
  beginDownload("A1 B1");
  onNotice([this] { shutDown(); });
  manager().moveUp(id("B"));
  EXPECT_TRUE(noticed_);
}

TEST_F(ShutdownTest, MayComeWhileAnOutcomeWaitsToBeRecorded) {
  const auto uid = beginDownload("A1 B1");
  onNotice([&] {
    // The run ends while the lock that its outcome is recorded under is held further up.
    library_.complete(uid);
    EXPECT_TRUE(log_.waitFor("player.finished " + mediaFile("A.vesk").string() + " 0"));
    shutDown();
  });
  manager().remove(id("B"));
  EXPECT_TRUE(noticed_);
}

TEST_F(ShutdownTest, ANewManagerMayStartBeforeTheOperationReturns) {
  beginDownload("A1 B1");
  onNotice([this] {
    shutDown();
    start();
  });
  manager().remove(id("B"));
  EXPECT_TRUE(noticed_);
  EXPECT_NE(KPXPreferences::userSettings, nullptr) << "the new manager's";
  shutDown();
  EXPECT_EQ(KPXPreferences::userSettings, nullptr);
}

TEST_F(ShutdownTest, NothingStartsThatIsPickedMeanwhile) {
  startAsleep("A1");
  support::Gate picking;
  support::Gate goOn;
  view_.onEvent([&](const std::string&) {
    picking.open();
    goOn.wait();
  });
  wakeScheduler();
  ASSERT_TRUE(picking.wait());
  support::LockWaiter host([this] { manager().Shutdown(); });
  EXPECT_TRUE(host.isHeldUp()) << "by the notice";
  goOn.open();
  host.join();
  EXPECT_TRUE(log_.lines("services.").empty());
  EXPECT_TRUE(log_.lines("library.start").empty());
}

TEST_F(ShutdownTest, TheLastReferenceMayBeReleasedOnAnyThread) {
  startAsleep("A1");
  auto* const plugin = &manager();
  plugin->kpimRetain();
  shutDown();
  std::thread other([plugin] { EXPECT_EQ(plugin->kpimRelease(), 0); });
  other.join();
}

TEST_F(ShutdownTest, AManagerThatIsDeletedShutsDown) {
  given("A1");
  auto* const deleted = new DownloadManager(&context_);
  library_.session();
  delete deleted;
  EXPECT_FALSE(library_.hasCallback());
}

TEST_F(ShutdownTest, IsPromptAtAnyInstantOfADownload) {
  for (int round = 0; round < 50; ++round) {
    given("A1 B1");
    start();
    if (round % 3 > 0) library_.waitUntilIdle();
    if (round % 3 > 1) support::waitFor([this] { return queue().starts_with("A3"); });
    const auto begin = std::chrono::steady_clock::now();
    shutDown();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
  }
}

}  // namespace
