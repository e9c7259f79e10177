#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTimer>
#include <algorithm>
#include <thread>

#include "VeskPlayerX/InterfaceIds.h"
#include "tests/support/Gate.h"
#include "tests/unit/plugin/ManagerTest.h"

namespace {

using Lines = std::vector<std::string>;

const Lines kFilmOpened{"player.open http://films.example/film.vesk"};

class PlayTest : public ManagerTest {
 protected:
  void begin(const std::string& queue, int percent) {
    given(queue, [percent](Item& item) { item.setPercentDownloaded(percent); });
    start();
  }
  void beginAsleep(const std::string& queue, int percent) {
    startAsleep(queue, [percent](Item& item) { item.setPercentDownloaded(percent); });
    log_.clear();
  }

  /// Reports wait until the manager knows of their transfer.
  void awaitPercent(const std::string& title, int percent) {
    EXPECT_TRUE(support::waitFor([&] { return percentOf(title) == percent; }));
  }

  std::string opened(const std::string& title) {
    return "player.open " + mediaFile(title + ".vesk").string();
  }
};

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

TEST_F(PlayTest, EveryItemThatDoesNotFlowRestartsTheQueue) {
  for (const char* const status : {"0", "1", "2", "5", "6"}) {
    startAsleep("A1 B" + std::string(status));
    EXPECT_FALSE(manager().play(id("B")));
    EXPECT_EQ(queue(), "B1 A1");
    shutDown();
  }
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

TEST_F(PlayTest, ThePlayerIsLetGoOfAfterwards) {
  beginAsleep("A4", 0);
  manager().play(id("A"));
  EXPECT_EQ(context_.holds(VeskPlayerX::DIN_Player), 0);
}

TEST_F(PlayTest, AnAddressIsPlayedByItsFirstItem) {
  beginAsleep("A3 B3", 40);
  item("B").setUrl(L"http://h/b.vesk");
  EXPECT_TRUE(manager().resumePlaybackForUrl(L"http://h/b.vesk"));
  EXPECT_EQ(log_.lines("player."), Lines{"player.open http://h/b.vesk"});
}

TEST_F(PlayTest, AnAddressThatIsNotQueuedIsNotPlayed) {
  beginAsleep("A3", 40);
  EXPECT_FALSE(manager().resumePlaybackForUrl(L"http://films.example/Film.vesk"));
  EXPECT_TRUE(log_.lines().empty());
}

// Automatic playback.

TEST_F(PlayTest, AWishIsFulfilledAsSoonAsThereIsEnough) {
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

TEST_F(PlayTest, AWishIsFulfilledThoughAnotherDownloadWasAddedMeanwhile) {
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

TEST_F(PlayTest, AWishThatWasNotFulfilledBeforeIsFulfilledAtTheEnd) {
  begin("A1 B1", 0);
  transferOf("A");
  await("A3 B1");
  manager().play(id("B"));
  const auto uid = transferOf("B");
  await("B3 A1");
  library_.complete(uid);
  EXPECT_TRUE(log_.waitFor(kFilmOpened[0]));
}

// Waiting for a transfer to begin.

class PlayWaitTest : public PlayTest {
 protected:
  /// Has the transfer of every item wait for `flow_`, with the item starting.
  void holdStarts() {
    services_.whileAuthorizing([this] {
      authorizing_.open();
      flow_.wait();
    });
  }

  void TearDown() override {
    flow_.open();
    shutDown();
  }

  support::Gate authorizing_;
  support::Gate flow_;
};

TEST_F(PlayWaitTest, PlayingLetsTheSchedulerAndTheOtherThreadsGoOn) {
  holdStarts();
  begin("A1", 30);
  ASSERT_TRUE(authorizing_.wait());
  log_.clear();
  bool played = false;
  std::thread host([&] { played = manager().play(id("A")); });
  EXPECT_TRUE(log_.waitFor("view.keepsRunning")) << "the item is starting anew";
  EXPECT_TRUE(log_.lines("player.open").empty());
  flow_.open();
  host.join();
  EXPECT_TRUE(played);
  EXPECT_EQ(log_.lines("player.open"), kFilmOpened);
}

TEST_F(PlayWaitTest, FromInsideAnOperationItDoesNotWait) {
  beginAsleep("A1 B1", 30);
  bool played = true;
  view_.onEvent([&](const std::string&) {
    view_.onEvent({});
    played = manager().play(id("B"));
  });
  manager().remove(id("A"));
  EXPECT_FALSE(played);
}

/// With the host's event loop on the test's own thread.
class PlayEventLoopTest : public PlayWaitTest {
 protected:
  /// Runs `action` from the event loop while `play` waits.
  void whileWaiting(const std::function<void()>& action) {
    QTimer::singleShot(0, &application_, action);
  }

 private:
  static inline int noArguments_ = 0;
  QCoreApplication application_{noArguments_, nullptr};
};

TEST_F(PlayEventLoopTest, TheHostsEventLoopRunsMeanwhile) {
  holdStarts();
  begin("A1", 30);
  ASSERT_TRUE(authorizing_.wait());
  whileWaiting([this] { flow_.open(); });
  EXPECT_TRUE(manager().play(id("A")));
}

TEST_F(PlayEventLoopTest, RemovingTheItemEndsTheWait) {
  beginAsleep("A1", 30);
  whileWaiting([this] { manager().remove(id("A")); });
  EXPECT_FALSE(manager().play(id("A")));
  EXPECT_EQ(queue(), "");
}

TEST_F(PlayEventLoopTest, TheFailureOfTheItemEndsTheWait) {
  beginAsleep("A1", 30);
  whileWaiting([this] { manager().updateStatus(id("A"), DownloadStatusFailed); });
  EXPECT_TRUE(manager().play(id("A")));
  EXPECT_EQ(log_.lines("player."), kFilmOpened);
}

TEST_F(PlayEventLoopTest, ShuttingDownEndsTheWait) {
  beginAsleep("A1", 30);
  whileWaiting([this] { shutDown(); });
  EXPECT_FALSE(manager().play(id("A")));
  EXPECT_TRUE(log_.lines("player.").empty());
}

TEST_F(PlayEventLoopTest, ShuttingDownEndsTheWaitForATransferThatIsStarting) {
  holdStarts();
  begin("A1", 30);
  ASSERT_TRUE(authorizing_.wait());
  whileWaiting([this] {
    flow_.open();
    shutDown();
  });
  manager().play(id("A"));
  SUCCEED();
}

TEST_F(PlayEventLoopTest, AnotherPlayInsideTheWaitIsServedFirst) {
  beginAsleep("A1 B4", 30);
  bool inner = false;
  whileWaiting([&] {
    inner = manager().play(id("B"));
    manager().remove(id("A"));
  });
  EXPECT_FALSE(manager().play(id("A")));
  EXPECT_TRUE(inner);
  EXPECT_EQ(log_.lines("player."), Lines{opened("B")});
}

}  // namespace
