#include <algorithm>

#include "VeskPlayerX/InterfaceIds.h"
#include "tests/unit/plugin/PlayFixture.h"

namespace {

using Lines = std::vector<std::string>;

class PlayTest : public PlayFixture {};

TEST_F(PlayTest, ACompletedItemIsPlayedFromItsPath) {
  beginAsleep("A1 B4", 0);
  EXPECT_TRUE(manager().play(id("B")));
  EXPECT_EQ(log_.lines("player."), Lines{opened("B")});
  EXPECT_EQ(queue(), "A1 B4");
}

TEST_F(PlayTest, ADownloadingItemIsPlayedFromItsAddress) {
  beginAsleep("A3 B1", 40);
  EXPECT_TRUE(manager().play(id("A")));
  EXPECT_EQ(log_.lines("player."), kFilmOpened);
  EXPECT_EQ(queue(), "A3 B1");
}

TEST_F(PlayTest, AHeldItemIsPlayedFromItsAddress) {
  beginAsleep("A1", 5);
  manager().updateStatus(id("A"), DownloadStatusHeld);
  EXPECT_TRUE(manager().play(id("A")));
  EXPECT_EQ(log_.lines("player."), kFilmOpened);
}

TEST_F(PlayTest, ADownloadingItemWithTooLittleIsNotPlayedYet) {
  beginAsleep("A3 B1", 4);
  EXPECT_FALSE(manager().play(id("A")));
  EXPECT_TRUE(log_.lines("player.").empty());
  EXPECT_FALSE(item("A").getAutoProgressivePlayback());
}

TEST_F(PlayTest, AnUnknownItemIsNotPlayed) {
  beginAsleep("A4", 0);
  EXPECT_FALSE(manager().play(0));
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(PlayTest, AQueuedItemWithTooLittleIsPutFirstAndPlayedLater) {
  beginAsleep("A1 B1", 2);
  EXPECT_FALSE(manager().play(id("B")));
  EXPECT_EQ(queue(), "B1 A1");
  EXPECT_TRUE(item("B").getAutoProgressivePlayback());
  EXPECT_FALSE(item("A").getAutoProgressivePlayback());
  EXPECT_FALSE(manager().isPaused());
  EXPECT_TRUE(log_.lines("player.").empty());
}

TEST_F(PlayTest, EachStepOfARestartIsAnnounced) {
  beginAsleep("A3 X1 B1", 2);
  EXPECT_EQ(writtenDuring([this] { manager().play(id("B")); }),
            (Lines{"A0 X1 B1", "A0 B1 X1", "B0 A1 X1", "B1 A1 X1"}));
  EXPECT_EQ(notices(), Lines(4, "view.listChanged"));
}

TEST_F(PlayTest, EveryItemThatDoesNotFlowRestartsTheQueue) {
  for (const char* const status : {"0", "1", "2", "5", "6"}) {
    startAsleep("A1 B" + std::string(status));
    EXPECT_FALSE(manager().play(id("B")));
    EXPECT_EQ(queue(), "B1 A1");
    shutDown();
  }
}

TEST_F(PlayTest, TooLittleOfAHeldItemStillEndsAPause) {
  beginAsleep("A1", 4);
  manager().pause();
  manager().updateStatus(id("A"), DownloadStatusHeld);
  EXPECT_FALSE(manager().play(id("A")));
  EXPECT_FALSE(manager().isPaused());
  EXPECT_EQ(queue(), "A7");
}

TEST_F(PlayTest, PlayingEndsAPause) {
  beginAsleep("A3 B4", 0);
  manager().pause();
  EXPECT_TRUE(manager().play(id("B")));
  EXPECT_FALSE(manager().isPaused());
  EXPECT_EQ(queue(), "A1 B4");
}

TEST_F(PlayTest, AQueuedItemWithEnoughIsPlayedOnceItFlows) {
  begin("A1 B1", 30);
  transferOf("A");
  await("A3 B1");
  EXPECT_TRUE(manager().play(id("B")));
  EXPECT_EQ(log_.lines("player."), kFilmOpened);
  EXPECT_EQ(queue(), "B3 A1");
  EXPECT_FALSE(item("B").getAutoProgressivePlayback());
}

TEST_F(PlayTest, FivePercentAreEnough) {
  begin("A1 B1", 5);
  transferOf("A");
  await("A3 B1");
  EXPECT_TRUE(manager().play(id("B")));
  EXPECT_EQ(log_.lines("player."), kFilmOpened);
  EXPECT_FALSE(item("B").getAutoProgressivePlayback());
}

TEST_F(PlayTest, FourPercentAreNot) {
  begin("A1 B1", 4);
  transferOf("A");
  await("A3 B1");
  EXPECT_FALSE(manager().play(id("B")));
  transferOf("B");
  await("B3 A1");
  EXPECT_TRUE(item("B").getAutoProgressivePlayback());
  EXPECT_TRUE(log_.lines("player.").empty());
}

TEST_F(PlayTest, AFailedItemWithEnoughIsPlayedOnceItFlowsAgain) {
  begin("A1 B6", 30);
  transferOf("A");
  await("A3 B6");
  EXPECT_TRUE(manager().play(id("B")));
  EXPECT_EQ(queue(), "B3 A1");
}

TEST_F(PlayTest, WithoutAPlayerTheQueueIsRearrangedAllTheSame) {
  context_.answer(VeskPlayerX::DIN_Player, KPIM::kNoSuchPlugin);
  beginAsleep("A1 B1", 30);
  EXPECT_FALSE(manager().play(id("B")));
  EXPECT_EQ(queue(), "B1 A1");
}

TEST_F(PlayTest, ThePlayerIsLoadedWhenItHasToBeThenReleased) {
  beginAsleep("A4", 0);
  manager().play(id("A"));
  EXPECT_EQ(context_.lookups(VeskPlayerX::DIN_Player), 1);
  EXPECT_EQ(context_.holds(VeskPlayerX::DIN_Player), 0);
  EXPECT_FALSE(context_.wasAskedNotToLoad());
  EXPECT_FALSE(context_.wasAskedToChooseOtherwise());
}

TEST_F(PlayTest, AnAddressIsPlayedByItsFirstItem) {
  beginAsleep("A3 B3", 40);
  item("B").setUrl(L"http://h/b.vesk");
  EXPECT_TRUE(manager().resumePlaybackForUrl(L"http://h/b.vesk"));
  EXPECT_EQ(log_.lines("player."), Lines{"player.open http://h/b.vesk"});
}

TEST_F(PlayTest, OfTwoItemsWithOneAddressTheFirstIsPlayed) {
  beginAsleep("A4 B3", 40);
  EXPECT_TRUE(manager().resumePlaybackForUrl(kvpm::StringTools::stringToWString(kFilm)));
  EXPECT_EQ(log_.lines("player."), Lines{opened("A")});
}

TEST_F(PlayTest, AnAddressOfWhichThereIsTooLittleIsNotPlayed) {
  beginAsleep("A3", 4);
  EXPECT_FALSE(manager().resumePlaybackForUrl(kvpm::StringTools::stringToWString(kFilm)));
  EXPECT_TRUE(log_.lines("player.").empty());
}

TEST_F(PlayTest, AnAddressThatIsNotQueuedIsNotPlayed) {
  beginAsleep("A3", 40);
  EXPECT_FALSE(manager().resumePlaybackForUrl(L"http://films.example/Film.vesk"));
  EXPECT_TRUE(log_.lines().empty());
}

// Automatic playback.

TEST_F(PlayTest, AutomaticPlaybackBeginsAsSoonAsThereIsEnough) {
  begin("A1 B1", 0);
  transferOf("A");
  await("A3 B1");
  EXPECT_FALSE(manager().play(id("B")));
  const auto uid = transferOf("B");
  await("B3 A1");
  library_.progress(uid, 5);
  awaitPercent("B", 5);
  EXPECT_TRUE(log_.lines("player.open").empty());
  library_.progress(uid, 6);
  library_.progress(uid, 7);
  awaitPercent("B", 7);
  EXPECT_EQ(log_.lines("player.open"), kFilmOpened) << "once";
}

TEST_F(PlayTest, AutomaticPlaybackBeginsThoughAnotherDownloadWasAddedMeanwhile) {
  begin("A1", 0);
  transferOf("A");
  await("A3");
  EXPECT_FALSE(manager().play(id("A"))) << "restarts nothing";
  manager().pause();
  EXPECT_FALSE(manager().play(id("A")));
  const auto uid = transferOf("A");
  await("A3");
  services_.setTicketRecords({record(L"B")});
  manager().addTicket(L"/b.tix", false);
  EXPECT_EQ(queue(), "A1 B1") << "queued anew while its transfer goes on";
  library_.progress(uid, 6);
  EXPECT_TRUE(log_.waitFor(kFilmOpened[0]));
  const Uids stopped = stoppedSessions();
  EXPECT_EQ(std::count(stopped.begin(), stopped.end(), uid), 0) << "the transfer goes on";
}

TEST_F(PlayTest, AutomaticPlaybackThatHasNotBegunBeginsAtTheEnd) {
  begin("A1 B1", 0);
  transferOf("A");
  await("A3 B1");
  manager().play(id("B"));
  const auto uid = transferOf("B");
  await("B3 A1");
  library_.complete(uid);
  EXPECT_TRUE(log_.waitFor(kFilmOpened[0]));
}

}  // namespace
