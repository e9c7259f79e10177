#include <algorithm>
#include <functional>

#include "tests/unit/plugin/ManagerFixture.h"

namespace {

using Lines = std::vector<std::string>;

class PauseTest : public ManagerFixture {
 protected:
  /// Runs `operation`, which pauses and resumes the queue for its own ends, with a view that pauses
  /// the queue as soon as it hears that the queue goes on.
  void pauseAtItsResume(const std::function<void()>& operation) {
    bool wasPaused = false;
    view_.onEvent([this, &wasPaused](const std::string&) {
      if (wasPaused && !manager().isPaused()) {
        view_.onEvent({});
        manager().pause();
      }
      wasPaused = manager().isPaused();
    });
    operation();
  }
};

TEST_F(PauseTest, PausingStopsTheTransferAndParksTheQueue) {
  start("A1 B1 C6");
  const auto uid = transferOf("A");
  await("A3 B1 C6");
  log_.clear();
  manager().pause();
  EXPECT_TRUE(manager().isPaused());
  EXPECT_EQ(queue(), "A0 B1 C6");
  EXPECT_EQ(stoppedSessions(), Uids{uid});
  EXPECT_EQ(written(), "A0 B1 C6");
  EXPECT_FALSE(log_.lines("view.listChanged").empty());
}

TEST_F(PauseTest, APausedQueueStartsNothingUntilItIsResumed) {
  start("A1 B1");
  transferOf("A");
  await("A3 B1");
  manager().pause();
  manager().updateStatus(id("A"), DownloadStatusFailed);
  ASSERT_EQ(queue(), "B1 A6");
  EXPECT_EQ(library_.sessionCount(), 1U);
  manager().resume();
  EXPECT_FALSE(manager().isPaused());
  transferOf("B");
  await("B3 A6");
}

TEST_F(PauseTest, ResumingQueuesThePausedItemAnew) {
  startAsleep("A0 B2 C3 D5 E4");
  manager().resume();
  EXPECT_EQ(queue(), "A1 B1 C1 D5 E4");
  EXPECT_EQ(written(), "A1 B1 C1 D5 E4");
}

TEST_F(PauseTest, PausingStopsTheSessionOfAHeldItem) {
  startAsleep("A1 B1 C1");
  wakeScheduler();
  transferOf("A");
  await("A3 B1 C1");
  manager().updateStatus(id("A"), DownloadStatusQueued);
  manager().updateStatus(id("B"), DownloadStatusHeld);
  item("B").setUID(77);
  manager().pause();
  EXPECT_EQ(queue(), "A1 B0 C1");
  const Uids stopped = stoppedSessions();
  EXPECT_EQ(std::count(stopped.begin(), stopped.end(), 77U), 1);
}

TEST_F(PauseTest, PausingTwiceIsPausingOnce) {
  start("A1");
  transferOf("A");
  await("A3");
  manager().pause();
  manager().pause();
  EXPECT_EQ(queue(), "A0");
}

TEST_F(PauseTest, APauseReturnsOnceTheTransferHasEnded) {
  start("A1");
  transferOf("A");
  await("A3");
  manager().pause();
  // Nothing reports any more: the item keeps what the pause has given it.
  library_.progress(1001, 50);
  EXPECT_EQ(item("A").getPercentDownloaded(), 0);
  EXPECT_EQ(queue(), "A0");
}

TEST_F(PauseTest, AStoppedTransferAnnouncesTheList) {
  start("A1");
  transferOf("A");
  await("A3");
  log_.clear();
  manager().pause();
  EXPECT_TRUE(log_.waitFor("view.listChanged", 2)) << "by the pause and by the scheduler";
  shutDown();
  EXPECT_EQ(log_.count("view.listChanged"), 2U);
}

TEST_F(PauseTest, PausingAnnouncesTheListOnce) {
  startAsleep("A3 B1");
  log_.clear();
  manager().pause();
  EXPECT_EQ(notices(), Lines{"view.listChanged"});
  EXPECT_EQ(written(), "A0 B1");
  log_.clear();
  manager().resume();
  EXPECT_EQ(notices(), Lines{"view.listChanged"});
  EXPECT_EQ(written(), "A1 B1");
}

TEST_F(PauseTest, APauseFromTheViewOutlivesTheRetryThatItHearsOf) {
  startAsleep("A3 B6");
  pauseAtItsResume([this] { manager().retry(id("B")); });
  EXPECT_TRUE(manager().isPaused());
  EXPECT_EQ(queue(), "B1 A1");
}

TEST_F(PauseTest, APauseFromTheViewOutlivesThePlayThatItHearsOf) {
  startAsleep("A3 B1");
  pauseAtItsResume([this] { EXPECT_FALSE(manager().play(id("B"))); });
  EXPECT_TRUE(manager().isPaused());
  EXPECT_EQ(queue(), "B1 A1");
}

TEST_F(PauseTest, APauseFromTheViewOutlivesTheOpeningOfAFileThatItHearsOf) {
  const auto file = folder_.write("media/film.vesk", "ten bytes!");
  const VeskDrmPlaybackAuthorizationResponse response{11, L"N", "ticket N"};
  startAsleep("A3");
  pauseAtItsResume([&] { manager().zpsFileOpenedForPlayback(file.wstring(), &response, nullptr); });
  EXPECT_TRUE(manager().isPaused());
  EXPECT_EQ(queue(), "N1 A1");
}

TEST_F(PauseTest, APauseEndsWithTheRun) {
  start("A1");
  transferOf("A");
  await("A3");
  manager().pause();
  shutDown();
  ASSERT_EQ(written(), "A0");
  start();
  EXPECT_FALSE(manager().isPaused());
  transferOf("A");
  await("A3");
}

}  // namespace
