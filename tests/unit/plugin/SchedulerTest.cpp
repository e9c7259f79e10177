#include <functional>
#include <thread>

#include "tests/unit/plugin/ManagerFixture.h"

namespace {

using Lines = std::vector<std::string>;

class SchedulerTest : public ManagerFixture {
 protected:
  /// Wakes the scheduler again and again inside an announcement of `operation`, which holds its
  /// lock there, and expects no pick.
  void expectNoPickDuring(const std::function<void()>& operation) {
    view_.onEvent([this, host = std::this_thread::get_id()](const std::string&) {
      EXPECT_EQ(std::this_thread::get_id(), host) << "no other thread announces anything";
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
  start("A1 B1");
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
  start("");
  manager().resume();
  EXPECT_EQ(library_.sessionCount(), 0U);
  EXPECT_EQ(notices(), Lines{"view.listChanged"}) << "the resume's own";
  services_.setTicketRecords({record(L"A")});
  manager().addTicket(L"/a.tix", false);
  transferOf("A");
}

TEST_F(SchedulerTest, AQueueOfCompletedAndFailedItemsStartsNothing) {
  start("A4 B6");
  manager().resume();
  services_.setTicketRecords({record(L"C", 5)});
  manager().addTicket(L"/c.tix", false);
  transferOf("C");
}

TEST_F(SchedulerTest, PicksItemsOfEachStatusThatWaits) {
  for (const char* const status : {"A0", "A1", "A2", "A3"}) {
    start(status);
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

TEST_F(SchedulerTest, AnItemBelowOnesThatHaveEndedClimbsAndRequeuesTheUnfinished) {
  const struct {
    const char* above;
    const char* before;
    const char* picked;
    const char* after;
  } rows[] = {
      {"stopped", "A5 B5 C1", "C", "C3 A1 B5"},
      {"failed", "A6 B1", "B", "B3 A1"},
      {"completed", "A4 B1", "B", "B3 A4"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.above);
    start(row.before);
    transferOf(row.picked);
    await(row.after);
    shutDown();
  }
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

TEST_F(SchedulerTest, NothingIsPickedWhileAnOperationHoldsTheLock) {
  startAsleep("A1 B1 C1 X1");
  expectNoPickDuring([this] { EXPECT_TRUE(manager().remove(id("X"))); });
  transferOf("A");
  await("A3 B1 C1");
  shutDown();
  startAsleep("A1 B1 C1");
  expectNoPickDuring([this] { EXPECT_TRUE(manager().moveUp(id("C"))); });
  transferOf("A");
  await("A3 C1 B1");
}

TEST_F(SchedulerTest, AClimbToTheTopStopsTheWorkerOnce) {
  start("A1 B5 C1");
  const auto uid = transferOf("A");
  await("A3 B5 C1");
  library_.broke(uid);
  transferOf("C");
  await("C3 B1 A6");
  EXPECT_EQ(stoppedSessions(), Uids{uid}) << "the worker's last session, released once";
}

}  // namespace
