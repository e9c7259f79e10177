#include <algorithm>
#include <functional>
#include <thread>

#include "tests/unit/plugin/ManagerFixture.h"

namespace {

using Lines = std::vector<std::string>;

class SchedulerTest : public ManagerFixture {
 protected:
  void begin(const std::string& queue, const Change& change = {}) {
    given(queue, change);
    start();
  }

  std::string finished(const std::string& title) {
    return "player.finished " + mediaFile(title + ".vesk").string() + " 0";
  }

  /// Inside an announcement of `operation`, which holds its locks there, wakes the scheduler again
  /// and again.
  void tempt(const std::function<void()>& operation) {
    view_.onEvent([this, host = std::this_thread::get_id()](const std::string&) {
      EXPECT_EQ(std::this_thread::get_id(), host) << "nobody else announces anything";
      view_.onEvent({});
      wakeScheduler();
      for (int i = 0; i < 50; ++i) manager().resume();
      EXPECT_EQ(log_.lines("library.").size(), 0U);
      EXPECT_EQ(log_.count("view.listChanged"), 51U) << "the operation's, then those of resuming";
    });
    log_.clear();
    operation();
  }
};

TEST_F(SchedulerTest, DownloadsOneItemAfterTheOther) {
  begin("A1 B1");
  const auto a = transferOf("A");
  await("A3 B1");
  library_.complete(a);
  const auto b = transferOf("B");
  await("B3 A4");
  library_.complete(b);
  await("A4 B4");
  EXPECT_EQ(library_.sessionCount(), 2U);
}

TEST_F(SchedulerTest, AnEmptyQueueStartsNothingUntilAnItemIsAdded) {
  begin("");
  manager().resume();
  EXPECT_EQ(library_.sessionCount(), 0U);
  EXPECT_EQ(notices(), Lines{"view.listChanged"}) << "the resume's own";
  services_.setTicketRecords({record(L"A")});
  manager().addTicket(L"/a.tix", false);
  transferOf("A");
}

TEST_F(SchedulerTest, AQueueOfCompletedAndFailedItemsStartsNothing) {
  begin("A4 B6");
  manager().resume();
  services_.setTicketRecords({record(L"C", 5)});
  manager().addTicket(L"/c.tix", false);
  transferOf("C");
}

TEST_F(SchedulerTest, PicksItemsOfEachStatusThatWaits) {
  for (const char* const status : {"A0", "A1", "A2", "A3"}) {
    begin(status);
    transferOf("A");
    await("A3");
    shutDown();
  }
}

TEST_F(SchedulerTest, AHeldItemThatComesFirstBlocksTheQueue) {
  startAsleep("A4 B1 C1");
  manager().updateStatus(id("B"), DownloadStatusHeld);
  wakeScheduler();
  manager().resume();
  EXPECT_EQ(queue(), "A4 B7 C1");
  EXPECT_EQ(notices(), (Lines{"view.itemChanged " + std::to_string(id("B")), "view.listChanged"}));
  // The first transfer ever is that of the item that was held.
  manager().updateStatus(id("B"), DownloadStatusQueued);
  transferOf("B");
  await("B3 A4 C1");
}

TEST_F(SchedulerTest, AHeldItemBehindTheFirstBlocksNothing) {
  startAsleep("A1 B1");
  manager().updateStatus(id("B"), DownloadStatusHeld);
  wakeScheduler();
  transferOf("A");
  await("A3 B7");
}

TEST_F(SchedulerTest, AnItemBelowAStoppedOneClimbsAndRequeuesIt) {
  begin("A5 B5 C1");
  transferOf("C");
  await("C3 A1 B5");
}

TEST_F(SchedulerTest, AnItemBelowAFailedOneClimbsAndRequeuesIt) {
  begin("A6 B1");
  transferOf("B");
  await("B3 A1");
}

TEST_F(SchedulerTest, AnItemBelowACompletedOneClimbsPastIt) {
  begin("A4 B1");
  transferOf("B");
  await("B3 A4");
}

TEST_F(SchedulerTest, PickingAnnouncesTheListTwice) {
  startAsleep("A1");
  log_.clear();
  wakeScheduler();
  transferOf("A");
  await("A3");
  const Lines seen = notices();
  ASSERT_GE(seen.size(), 3U);
  EXPECT_EQ(Lines(seen.begin(), seen.begin() + 3),
            (Lines{"view.listChanged", "view.listChanged",
                   "view.itemChanged " + std::to_string(id("A"))}));
}

TEST_F(SchedulerTest, AClimbAnnouncesEachStepThenTheListTwice) {
  startAsleep("A5 B5 C1");
  Lines lists;
  view_.onEvent([&](const std::string&) {
    if (lists.size() < 4) lists.push_back(written());
  });
  log_.clear();
  wakeScheduler();
  transferOf("C");
  await("C3 A1 B5");
  EXPECT_EQ(lists, (Lines{"A5 C1 B5", "C1 A1 B5", "C1 A1 B5", "C1 A1 B5"}));
  const Lines seen = notices();
  ASSERT_GE(seen.size(), 5U);
  const std::string list = "view.listChanged";
  EXPECT_EQ(Lines(seen.begin(), seen.begin() + 5),
            (Lines{list, list, list, list, "view.itemChanged " + std::to_string(id("C"))}));
}

TEST_F(SchedulerTest, NothingIsPickedWhileAnOperationHoldsTheLocks) {
  startAsleep("A1 B1 C1 X1");
  tempt([this] { EXPECT_TRUE(manager().remove(id("X"))); });
  transferOf("A");
  await("A3 B1 C1");
  shutDown();
  startAsleep("A1 B1 C1");
  tempt([this] { EXPECT_TRUE(manager().moveUp(id("C"))); });
  transferOf("A");
  await("A3 C1 B1");
}

TEST_F(SchedulerTest, ADownloadWithoutAViewWritesNothing) {
  startAsleep("A1");
  manager().setViewInterface(nullptr);
  forgetFile();
  log_.clear();
  wakeScheduler();
  const auto uid = transferOf("A");
  await("A3");
  library_.progress(uid, 50);
  library_.complete(uid);
  EXPECT_TRUE(log_.waitFor(finished("A"), 2)) << "by the worker and by the scheduler";
  EXPECT_EQ(queue(), "A4");
  EXPECT_EQ(percentOf("A"), 100);
  EXPECT_FALSE(isWritten());
  EXPECT_TRUE(log_.lines("view.").empty());
}

TEST_F(SchedulerTest, TheWorkerHasACopyOfItsOwn) {
  begin("A1");
  const auto uid = transferOf("A");
  await("A3");
  EXPECT_EQ(item("A").getUID(), 0U) << "the session's id stays with the copy";
  EXPECT_NE(uid, 0U);
}

TEST_F(SchedulerTest, ACompletedItemGoesToTheBottomAndThePlayerIsTold) {
  begin("A1 B5 C6");
  library_.complete(transferOf("A"));
  EXPECT_TRUE(log_.waitFor(finished("A"), 2)) << "by the worker and by the scheduler";
  await("B5 C6 A4");
}

TEST_F(SchedulerTest, AFailedItemGoesToTheBottomAndThePlayerIsNotTold) {
  begin("A1 B5 C4");
  library_.broke(transferOf("A"));
  await("B5 C4 A6");
  EXPECT_TRUE(log_.lines("player.finished").empty());
}

TEST_F(SchedulerTest, AFailedItemWaitsForARetry) {
  begin("A1 B1");
  library_.broke(transferOf("A"));
  library_.complete(transferOf("B"));
  await("A6 B4");
}

TEST_F(SchedulerTest, AWorkerThatCannotEvenStartFailsTheItem) {
  context_.answer("com.vesk.playback.interface.Download", KPIM::kLoadFailed);
  begin("A1 B1");
  await("A6 B6");
}

TEST_F(SchedulerTest, AMissingPlayerIsIgnored) {
  context_.answer("com.vesk.playerX.pluginInterface.Player", KPIM::kNoSuchPlugin);
  begin("A1");
  library_.complete(transferOf("A"));
  await("A4");
}

TEST_F(SchedulerTest, ACancelledTransferStaysInPlaceAndStartsAnew) {
  begin("A1 B1");
  const auto uid = transferOf("A");
  await("A3 B1");
  manager().cancel();
  EXPECT_EQ(stoppedSessions(), Uids{uid});
  EXPECT_FALSE(manager().isPaused());
  transferOf("A");
  await("A3 B1");
}

TEST_F(SchedulerTest, CancellingNothingDoesNothing) {
  startAsleep("A1");
  log_.clear();
  manager().cancel();
  EXPECT_EQ(queue(), "A1");
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(SchedulerTest, CancellingStopsTheSessionOfAHeldItemThatComesFirst) {
  startAsleep("A1");
  library_.nextUid(50);
  wakeScheduler();
  transferOf("A");
  await("A3");
  manager().updateStatus(id("A"), DownloadStatusHeld);
  item("A").setUID(77);
  manager().cancel();
  EXPECT_EQ(stoppedSessions(), (Uids{77, 50})) << "its own, then whatever runs";
}

TEST_F(SchedulerTest, ARemovedItemsTransferGoesOnUnheard) {
  begin("A1 B1");
  const auto uid = transferOf("A");
  await("A3 B1");
  EXPECT_TRUE(manager().remove(id("A")));
  EXPECT_TRUE(stoppedSessions().empty());
  library_.progress(uid, 50);
  library_.complete(uid);
  transferOf("B");
  await("B3");
}

TEST_F(SchedulerTest, AWrongTurnOfAStartIsReportedInItsOrder) {
  library_.answerStartWith(0);
  startAsleep("A1");
  log_.clear();
  view_.onEvent([this](const std::string&) {
    const std::string line = "queue " + queue();
    const Lines seen = log_.lines("queue");
    if (seen.empty() || seen.back() != line) log_.add(line);
  });
  wakeScheduler();
  log_.waitUntil([](const Lines& lines) { return std::ranges::count(lines, "queue A6") == 2; });
  EXPECT_EQ(log_.lines("queue"),
            (Lines{"queue A1", "queue A2", "queue A6", "queue A3", "queue A6"}));
  EXPECT_EQ(log_.lines("view.urlFailed"), Lines{std::string("view.urlFailed ") + kFilm});
}

// Pausing.

TEST_F(SchedulerTest, PausingStopsTheTransferAndParksTheQueue) {
  begin("A1 B1 C6");
  const auto uid = transferOf("A");
  await("A3 B1 C6");
  log_.clear();
  manager().pause();
  EXPECT_TRUE(manager().isPaused());
  EXPECT_EQ(queue(), "A0 B1 C6");
  EXPECT_EQ(stoppedSessions(), Uids{uid});
  EXPECT_EQ(written(), "A0 B1 C6");
  EXPECT_EQ(log_.lines("view.listChanged").empty(), false);
}

TEST_F(SchedulerTest, APausedQueueStartsNothingUntilItIsResumed) {
  begin("A1 B1");
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

TEST_F(SchedulerTest, ResumingQueuesThePausedItemAnew) {
  startAsleep("A0 B2 C3 D5 E4");
  manager().resume();
  EXPECT_EQ(queue(), "A1 B1 C1 D5 E4");
  EXPECT_EQ(written(), "A1 B1 C1 D5 E4");
}

TEST_F(SchedulerTest, PausingStopsTheSessionOfAHeldItem) {
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

TEST_F(SchedulerTest, PausingTwiceIsPausingOnce) {
  begin("A1");
  transferOf("A");
  await("A3");
  manager().pause();
  manager().pause();
  EXPECT_EQ(queue(), "A0");
}

TEST_F(SchedulerTest, APauseReturnsOnceTheTransferHasEnded) {
  begin("A1");
  transferOf("A");
  await("A3");
  manager().pause();
  // Nothing reports any more: the item keeps what the pause has given it.
  library_.progress(1001, 50);
  EXPECT_EQ(item("A").getPercentDownloaded(), 0);
  EXPECT_EQ(queue(), "A0");
}

TEST_F(SchedulerTest, AStoppedTransferAnnouncesTheList) {
  begin("A1");
  transferOf("A");
  await("A3");
  log_.clear();
  manager().pause();
  EXPECT_TRUE(log_.waitFor("view.listChanged", 2)) << "by the pause and by the scheduler";
  shutDown();
  EXPECT_EQ(log_.count("view.listChanged"), 2U);
}

TEST_F(SchedulerTest, PausingAnnouncesTheListOnce) {
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

TEST_F(SchedulerTest, APauseEndsWithTheRun) {
  begin("A1");
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

// Retrying.

TEST_F(SchedulerTest, RetryingAFailedItemPutsItFirstAndRestartsTheQueue) {
  begin("A1 B6 C6");
  transferOf("A");
  await("A3 B6 C6");
  manager().retry(id("C"));
  EXPECT_FALSE(manager().isPaused());
  transferOf("C");
  await("C3 A1 B6");
}

TEST_F(SchedulerTest, RetryingAlsoEndsAPause) {
  startAsleep("A1 B6");
  manager().pause();
  wakeScheduler();
  manager().retry(id("B"));
  transferOf("B");
  await("B3 A1");
}

TEST_F(SchedulerTest, ARetriedItemIsQueuedBeforeTheQueueIsParked) {
  startAsleep("A3 B6");
  std::string first;
  view_.onEvent([&](const std::string&) {
    if (first.empty()) first = queue();
  });
  manager().retry(id("B"));
  view_.onEvent({});
  EXPECT_EQ(first, "A0 B1");
}

TEST_F(SchedulerTest, RetryingAnItemThatHasNotFailedDoesNothing) {
  startAsleep("A0 B1 C2 D3 E4 F5 G1");
  manager().updateStatus(id("G"), DownloadStatusHeld);
  log_.clear();
  for (const char* const title : {"A", "B", "C", "D", "E", "F", "G"}) manager().retry(id(title));
  manager().retry(0);
  EXPECT_EQ(queue(), "A0 B1 C2 D3 E4 F5 G7");
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(SchedulerTest, AClimbToTheTopStopsTheWorkerOnce) {
  begin("A1 B5 C1");
  const auto uid = transferOf("A");
  await("A3 B5 C1");
  library_.broke(uid);
  transferOf("C");
  await("C3 B1 A6");
  EXPECT_EQ(stoppedSessions(), Uids{uid}) << "the worker's last session, released once";
}

TEST_F(SchedulerTest, CancellingStopsTheHeadsOwnSessionOnlyWhileItIsActive) {
  begin("A1");
  transferOf("A");
  await("A3");
  manager().pause();
  item("A").setUID(77);
  const auto stopsOfA = [this](DownloadStatusEnumType status) {
    const Uids before = stoppedSessions();
    manager().updateStatus(id("A"), status);
    manager().cancel();
    const Uids after = stoppedSessions();
    return std::count(after.begin(), after.end(), 77U) -
           std::count(before.begin(), before.end(), 77U);
  };
  for (const int status : {0, 1, 5, 6}) {
    EXPECT_EQ(stopsOfA(static_cast<DownloadStatusEnumType>(status)), 0) << status;
  }
  for (const int status : {2, 3, 7}) {
    EXPECT_EQ(stopsOfA(static_cast<DownloadStatusEnumType>(status)), 1) << status;
  }
}

}  // namespace
