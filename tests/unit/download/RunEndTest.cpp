// What becomes of the film and its session at the end of a run.

#include "VeskPlayerX/InterfaceIds.h"
#include "tests/unit/download/WorkerFixture.h"

namespace {

using support::Gate;
using testing::ElementsAre;
using testing::IsEmpty;

using RunEnd = support::WorkerTest;

TEST_F(RunEnd, PlaysACompletedFilmOnRequest) {
  manager_.answerPlay(true);
  startAndFetch(filmToPlay());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  EXPECT_FALSE(worker_->getItem()->getAutoProgressivePlayback());
  EXPECT_THAT(log_.lines("player."), IsEmpty());
  EXPECT_THAT(library_.stopped(), IsEmpty());
  const auto lines = reports();
  EXPECT_THAT(std::vector(lines.end() - 4, lines.end()),
              ElementsAre("manager.setPlayable 7 true", "manager.updateDownloadProgress 7 100",
                          "manager.play 7", "manager.updateStatus 7 4"));
}

TEST_F(RunEnd, KeepsTheRequestAndReleasesTheSessionWhenPlayingFails) {
  startAndFetch(filmToPlay());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  EXPECT_TRUE(worker_->getItem()->getAutoProgressivePlayback());
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
}

TEST_F(RunEnd, LeavesTheSessionThatThePlayerHolds) {
  player_.setCurrentMediaId(kUid);
  startAndFetch(film());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  EXPECT_TRUE(log_.has("player.currentMediaId"));
  EXPECT_THAT(library_.stopped(), IsEmpty());
}

TEST_F(RunEnd, LeavesTheSessionOfAFilmThatPlaysAlready) {
  manager_.answerPlay(true);
  player_.setCurrentMediaId(kUid);
  startAndReport(filmToPlay());
  library_.progress(kUid, 50);
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  EXPECT_EQ(log_.count("manager.play 7"), 1u);
  EXPECT_TRUE(log_.has("player.currentMediaId"));
  EXPECT_THAT(library_.stopped(), IsEmpty());
}

TEST_F(RunEnd, LeavesTheSessionWithoutAPlayer) {
  context_.answer(VeskPlayerX::DIN_Player, KPIM::kNoSuchPlugin);
  startAndFetch(film());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  EXPECT_THAT(library_.stopped(), IsEmpty());
}

TEST_F(RunEnd, ReleasesASessionThatCompletedWithoutAPlayerInTheNextRun) {
  context_.answer(VeskPlayerX::DIN_Player, KPIM::kNoSuchPlugin);
  startAndFetch(film());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  log_.clear();
  startAndFetch(film());
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
}

TEST_F(RunEnd, ReleasesABrokenSessionInTheNextRun) {
  startAndFetch(film());
  library_.broke(kUid);
  EXPECT_EQ(ended(), 6);
  EXPECT_THAT(library_.stopped(), IsEmpty());
  log_.clear();
  startAndFetch(film());
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
}

TEST_F(RunEnd, LeavesABrokenSessionThatThePlayerHolds) {
  startAndFetch(film());
  player_.setCurrentMediaId(kUid);
  library_.broke(kUid);
  EXPECT_EQ(ended(), 6);
  log_.clear();
  startAndFetch(film());
  EXPECT_THAT(library_.stopped(), IsEmpty());
}

TEST_F(RunEnd, ReleasesABrokenSessionOnce) {
  startAndFetch(film());
  library_.broke(kUid);
  EXPECT_EQ(ended(), 6);
  worker_->stop();
  log_.clear();
  startAndFetch(film());
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
}

TEST_F(RunEnd, PlaysACompletedFilmWhenTheCallForAnEarlierOneHasEnded) {
  Gate& asked = gate();
  Gate& leave = gate();
  manager_.answerPlay(true);
  manager_.onEvent([&](const std::string& line) {
    if (line != "manager.play 7") return;
    asked.open();
    leave.wait();
  });
  startAndReport(filmToPlay());
  library_.onOwnThread([this] { library_.progress(kUid, 50); });
  ASSERT_TRUE(asked.wait());
  worker_->stop();
  EXPECT_EQ(ended(), 5);
  log_.clear();
  startAndFetch(filmToPlay());
  library_.complete(kUid + 1);
  ASSERT_TRUE(waitFor("manager.updateDownloadProgress 7 100"));
  leave.open();
  EXPECT_EQ(ended(), 4);
  EXPECT_EQ(log_.count("manager.play 7"), 1u);
  EXPECT_FALSE(worker_->getItem()->getAutoProgressivePlayback());
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
}

TEST_F(RunEnd, ReleasesThePlayer) {
  startAndFetch(film());
  library_.complete(kUid);
  ended();
  EXPECT_EQ(context_.lookups(VeskPlayerX::DIN_Player), 1);
  EXPECT_EQ(context_.holds(VeskPlayerX::DIN_Player), 0);
}

TEST_F(RunEnd, OfABrokenTransferReportsFailed) {
  startAndFetch(film());
  library_.broke(kUid);
  EXPECT_EQ(ended(), 6);
  EXPECT_THAT(log_.lines("manager.updateStatus"),
              ElementsAre("manager.updateStatus 7 3", "manager.updateStatus 7 6"));
}

}  // namespace
