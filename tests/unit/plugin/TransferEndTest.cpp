#include <algorithm>

#include "tests/unit/plugin/ManagerFixture.h"

namespace {

using Lines = std::vector<std::string>;

class TransferEndTest : public ManagerFixture {
 protected:
  std::string finished(const std::string& title) {
    return "player.finished " + mediaFile(title + ".vesk").string() + " 0";
  }
};

TEST_F(TransferEndTest, ADownloadWithoutAViewWritesNothing) {
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

TEST_F(TransferEndTest, TheWorkerHasACopyOfItsOwn) {
  start("A1");
  const auto uid = transferOf("A");
  await("A3");
  EXPECT_EQ(item("A").getUID(), 0U) << "the session's id stays with the copy";
  EXPECT_NE(uid, 0U);
}

TEST_F(TransferEndTest, ACompletedItemGoesToTheBottomAndThePlayerIsTold) {
  start("A1 B5 C6");
  library_.complete(transferOf("A"));
  EXPECT_TRUE(log_.waitFor(finished("A"), 2)) << "by the worker and by the scheduler";
  await("B5 C6 A4");
}

TEST_F(TransferEndTest, AFailedItemGoesToTheBottomAndThePlayerIsNotTold) {
  start("A1 B5 C4");
  library_.broke(transferOf("A"));
  await("B5 C4 A6");
  EXPECT_TRUE(log_.lines("player.finished").empty());
}

TEST_F(TransferEndTest, AFailedItemWaitsForARetry) {
  start("A1 B1");
  library_.broke(transferOf("A"));
  library_.complete(transferOf("B"));
  await("A6 B4");
}

TEST_F(TransferEndTest, AWorkerThatCannotEvenStartFailsTheItem) {
  context_.answer("com.vesk.playback.interface.Download", KPIM::kLoadFailed);
  start("A1 B1");
  await("A6 B6");
}

TEST_F(TransferEndTest, AMissingPlayerIsIgnored) {
  context_.answer("com.vesk.playerX.pluginInterface.Player", KPIM::kNoSuchPlugin);
  start("A1");
  library_.complete(transferOf("A"));
  await("A4");
}

TEST_F(TransferEndTest, ARemovedItemsTransferGoesOnUnheard) {
  start("A1 B1");
  const auto uid = transferOf("A");
  await("A3 B1");
  EXPECT_TRUE(manager().remove(id("A")));
  EXPECT_TRUE(stoppedSessions().empty());
  library_.progress(uid, 50);
  library_.complete(uid);
  transferOf("B");
  await("B3");
}

TEST_F(TransferEndTest, TheStatesOfARefusedStartAreReportedInTheirOrder) {
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

}  // namespace
