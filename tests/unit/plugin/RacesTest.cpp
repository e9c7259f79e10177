#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

#include "VeskPlayerX/InterfaceIds.h"
#include "tests/support/Gate.h"
#include "tests/unit/plugin/ManagerFixture.h"

namespace {

/// A player that does not come back from opening a film until it is told to.
class HangingPlayer : public support::FakePlayer {
 public:
  using FakePlayer::FakePlayer;

  void openMedia(const QString& location) override {
    FakePlayer::openMedia(location);
    opening.open();
    goOn.wait();
  }

  support::Gate opening;
  support::Gate goOn;
};

/// What happens in the same moment as something else.
class RacesTest : public ManagerFixture {
 protected:
  unsigned long long beginDownload(const std::string& queue) {
    startAsleep(queue);
    wakeScheduler();
    const auto uid = transferOf("A");
    support::waitFor([this] { return this->queue().starts_with("A3"); });
    return uid;
  }

  /// Runs `action` once, on this thread, in the middle of an operation that holds the download
  /// lock.
  void insideAnOperation(const std::function<void()>& action) {
    view_.onEvent([this, action, host = std::this_thread::get_id()](const std::string&) {
      if (std::this_thread::get_id() != host) return;
      view_.onEvent({});
      action();
    });
    manager().remove(id("X"));
  }

  bool isStopped(unsigned long long uid) const {
    const Uids stopped = stoppedSessions();
    return std::find(stopped.begin(), stopped.end(), uid) != stopped.end();
  }
};

TEST_F(RacesTest, APauseBetweenPickAndStartIsNotLost) {
  for (int round = 0; round < 50; ++round) {
    startAsleep("A1 B1");
    support::Gate picking;
    view_.onEvent([&](const std::string&) { picking.open(); });
    wakeScheduler();
    ASSERT_TRUE(picking.wait());
    manager().pause();  // comes in as soon as the pick releases the lock
    const std::string parked = queue();
    EXPECT_TRUE(parked == "A1 B1" || parked == "A0 B1") << parked;
    for (std::size_t i = 0; i < library_.sessionCount(); ++i) {
      EXPECT_TRUE(isStopped(library_.session(i)->uid));
    }
    view_.onEvent({});
    shutDown();
  }
}

TEST_F(RacesTest, AMoveBetweenPickAndStartIsNotLost) {
  for (int round = 0; round < 50; ++round) {
    startAsleep("A1 B1");
    const unsigned int b = id("B");
    support::Gate picking;
    view_.onEvent([&](const std::string&) { picking.open(); });
    wakeScheduler();
    ASSERT_TRUE(picking.wait());
    EXPECT_TRUE(manager().moveUp(b));
    await("B3 A1");
    view_.onEvent({});
    shutDown();
  }
}

TEST_F(RacesTest, APauseFromTheViewInTheMiddleOfAPickIsNotLost) {
  startAsleep("A1 B1");
  std::atomic<int> told{0};
  std::atomic<int> toldAtStart{0};
  support::Gate paused;
  services_.whileAuthorizing([&] { toldAtStart = told.load(); });
  view_.onEvent([&, host = std::this_thread::get_id()](const std::string& line) {
    if (line != "view.listChanged" || std::this_thread::get_id() == host) return;
    if (++told != 1) return;
    manager().pause();
    paused.open();
  });
  wakeScheduler();
  ASSERT_TRUE(paused.wait());
  manager().resume();  // comes in as soon as the pick releases the lock
  transferOf("A");
  await("A3 B1");
  view_.onEvent({});
  EXPECT_EQ(toldAtStart, 5) << "a pick, the pause in it, and another pick";
}

TEST_F(RacesTest, AMoveFromTheViewInTheMiddleOfAPickIsNotLost) {
  startAsleep("A1 B1");
  view_.onEvent([&, b = id("B")](const std::string&) {
    view_.onEvent({});
    manager().moveUp(b);
  });
  wakeScheduler();
  transferOf("B");
  await("B3 A1");
}

TEST_F(RacesTest, NothingOfAPickStandsBetweenTheNoticesOfAnAdding) {
  for (int round = 0; round < 50; ++round) {
    startAsleep("A1");
    support::EventLog order;
    view_.onEvent([&, host = std::this_thread::get_id()](const std::string& line) {
      const bool adding = std::this_thread::get_id() == host;
      order.add((adding ? "adding " : "pick ") + line);
      if (adding) wakeScheduler();
    });
    manager().add(L"http://films.example/c.avi", L"C", L"P");
    EXPECT_TRUE(library_.session(static_cast<std::size_t>(round)));
    view_.onEvent({});
    const std::vector<std::string> lines = order.lines();
    EXPECT_EQ(lines.at(0), "adding view.listChanged");
    EXPECT_EQ(lines.at(1), "adding view.listChanged") << "resumed before anything is picked";
    shutDown();
  }
}

TEST_F(RacesTest, ACompletionAndAPauseEndInOneOfTheTwo) {
  for (int round = 0; round < 50; ++round) {
    startAsleep("A1");
    wakeScheduler();
    const auto uid = library_.session(static_cast<std::size_t>(round))->uid;
    support::waitFor([this] { return queue() == "A3"; });
    library_.onOwnThread([this, uid] { library_.complete(uid); });
    manager().pause();
    ASSERT_TRUE(library_.waitUntilIdle());
    const std::string outcome = queue();
    EXPECT_TRUE(outcome == "A4" || outcome == "A0") << outcome;
    shutDown();
  }
}

TEST_F(RacesTest, AStopAfterTheCompletionDoesNotUndoIt) {
  const auto uid = beginDownload("A1 X1");
  insideAnOperation([&] {
    library_.complete(uid);
    log_.waitFor("player.finished " + mediaFile("A.vesk").string() + " 0");
    manager().pause();
    manager().cancel();
  });
  EXPECT_EQ(queue(), "A4");
}

TEST_F(RacesTest, ARetryIsNotUndoneByTheOutcomeOfTheTransferThatFailed) {
  const auto uid = beginDownload("A1 X1");
  const unsigned int a = id("A");
  insideAnOperation([&] {
    library_.broke(uid);
    support::waitFor([this] { return queue() == "A6"; });
    manager().retry(a);
    EXPECT_EQ(queue(), "A1");
  });
  transferOf("A");
  await("A3");
}

TEST_F(RacesTest, APlayOfAFailedItemIsNotUndoneByTheOutcomeOfItsTransfer) {
  const auto uid = beginDownload("A1 X1");
  const unsigned int a = id("A");
  insideAnOperation([&] {
    library_.broke(uid);
    support::waitFor([this] { return queue() == "A6"; });
    EXPECT_FALSE(manager().play(a));
  });
  transferOf("A");
  await("A3");
}

TEST_F(RacesTest, AnItemThatFailsWhileItIsMovedDownHasFailed) {
  const auto uid = beginDownload("A1 B1 X1");
  insideAnOperation([&] {
    library_.broke(uid);
    support::waitFor([this] { return queue() == "B1 A6"; });
    EXPECT_FALSE(manager().moveDown(id("A")));
  });
  transferOf("B");
  await("B3 A6");
}

TEST_F(RacesTest, ReportsOfAnEarlierSessionDoNotTouchTheItem) {
  const auto first = beginDownload("A1");
  manager().cancel();
  const auto second = transferOf("A");
  await("A3");
  ASSERT_NE(first, second);
  library_.progress(first, 90);
  library_.broke(first);
  library_.complete(first);
  library_.progress(second, 10);
  EXPECT_TRUE(support::waitFor([this] { return percentOf("A") == 10; }));
  EXPECT_EQ(queue(), "A3");
}

TEST_F(RacesTest, AViewIsToldNothingOnceItIsDetached) {
  for (int round = 0; round < 50; ++round) {
    startAsleep("A1 B1");
    std::atomic<bool> detached{false};
    std::atomic<int> late{0};
    view_.onEvent([&](const std::string&) { late += detached ? 1 : 0; });
    wakeScheduler();
    manager().setViewInterface(nullptr);
    detached = true;
    support::waitFor([this] { return queue().starts_with("A3"); });
    EXPECT_EQ(late, 0);
    shutDown();
    view_.onEvent({});
  }
}

/// An operation of the host at the moment at which the player is being told to play by itself.
struct HostOperation {
  const char* name;
  std::function<void(DownloadManager&, unsigned int head, unsigned int second)> run;
};

class AutomaticPlaybackTest : public RacesTest,
                              public ::testing::WithParamInterface<HostOperation> {
 protected:
  void SetUp() override {
    context_.offer<VeskPlayerX::PlayerInterface>(VeskPlayerX::DIN_Player, &hanging_);
    startAsleep("A1 B1 C6");
    manager().play(id("A"));
    head_ = id("A");
    second_ = id("B");
    wakeScheduler();
    uid_ = transferOf("A");
    await("A3 B1 C6");
  }

  /// The player hangs for as long as the operation takes; a deadlock would never end.
  void runWhilePlayerHangs() {
    ASSERT_TRUE(hanging_.opening.wait());
    GetParam().run(manager(), head_, second_);
    hanging_.goOn.open();
  }

  void TearDown() override {
    hanging_.goOn.open();
    shutDown();
    library_.waitUntilIdle();
  }

  HangingPlayer hanging_{log_};
  unsigned int head_ = 0;
  unsigned int second_ = 0;
  unsigned long long uid_ = 0;
};

TEST_P(AutomaticPlaybackTest, DoesNotHoldTheHostUpAtTheEndOfADownload) {
  library_.onOwnThread([this] { library_.complete(uid_); });
  runWhilePlayerHangs();
}

TEST_P(AutomaticPlaybackTest, DoesNotHoldTheHostUpInTheMiddleOfADownload) {
  library_.onOwnThread([this] { library_.progress(uid_, 50); });
  runWhilePlayerHangs();
}

using Manager = DownloadManager;
INSTANTIATE_TEST_SUITE_P(
    Of, AutomaticPlaybackTest,
    ::testing::Values(
        HostOperation{"Pause", [](Manager& m, auto, auto) { m.pause(); }},
        HostOperation{"Cancel", [](Manager& m, auto, auto) { m.cancel(); }},
        HostOperation{"MoveUp", [](Manager& m, auto, auto second) { m.moveUp(second); }},
        HostOperation{"MoveDown", [](Manager& m, auto head, auto) { m.moveDown(head); }},
        HostOperation{"MoveToTop", [](Manager& m, auto, auto second) { m.moveToTop(second); }},
        HostOperation{"MoveToBottom", [](Manager& m, auto head, auto) { m.moveToBottom(head); }},
        HostOperation{"Retry", [](Manager& m, auto, auto) { m.retry(m.at(2)->getId()); }},
        HostOperation{"Remove", [](Manager& m, auto head, auto) { m.remove(head); }},
        HostOperation{"PlayOfAnother", [](Manager& m, auto, auto second) { m.play(second); }},
        HostOperation{"Resume", [](Manager& m, auto, auto) { m.resume(); }},
        HostOperation{"Detach", [](Manager& m, auto, auto) { m.setViewInterface(nullptr); }}),
    [](const auto& test) { return test.param.name; });

class AutomaticPlaybackEndTest : public AutomaticPlaybackTest {};

TEST_P(AutomaticPlaybackEndTest, DoesNotKeepTheManagerFromShuttingDown) {
  library_.onOwnThread([this] { library_.complete(uid_); });
  ASSERT_TRUE(hanging_.opening.wait());
  library_.onOwnThread([this] { hanging_.goOn.open(); });
  GetParam().run(manager(), head_, second_);
}

INSTANTIATE_TEST_SUITE_P(Of, AutomaticPlaybackEndTest,
                         ::testing::Values(HostOperation{
                             "Shutdown", [](Manager& m, auto, auto) { m.Shutdown(); }}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
