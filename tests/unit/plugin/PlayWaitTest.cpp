#include <QCoreApplication>
#include <QTimer>
#include <thread>

#include "tests/support/Gate.h"
#include "tests/unit/plugin/PlayFixture.h"

namespace {

using Lines = std::vector<std::string>;

/// Waiting for a transfer to begin.
class PlayWaitTest : public PlayFixture {
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

TEST_F(PlayEventLoopTest, AnItemThatCompletesDuringTheWaitIsPlayedFromItsAddress) {
  beginAsleep("A1", 30);
  whileWaiting([this] { manager().updateStatus(id("A"), DownloadStatusCompleted); });
  EXPECT_TRUE(manager().play(id("A")));
  EXPECT_EQ(log_.lines("player.open"), kFilmOpened);
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
