#include <atomic>
#include <optional>
#include <thread>

#include "tests/support/LockWaiter.h"
#include "tests/unit/download/WorkerFixture.h"

namespace {

using support::Gate;
using support::LockWaiter;
using testing::ElementsAre;
using testing::IsEmpty;

class LibraryReports : public support::WorkerTest {
 protected:
  void finish() {
    library_.complete(kUid);
    ended();
  }

  /// Whether a report that another thread makes while the session is started has been handled when
  /// it returns.
  bool isHandledAtItsReturn() {
    log_.clear();
    std::atomic<bool> isHandled{false};
    std::optional<LockWaiter> reporter;
    library_.whileStarting([&](unsigned long long uid) {
      reporter.emplace([&, uid] {
        library_.progress(uid, 50);
        isHandled = log_.has("manager.updateDownloadProgress 7 50");
        library_.complete(uid);
      });
      reporter->isHeldUp();
    });
    EXPECT_EQ(run(film()), 4);
    reporter.reset();
    return isHandled;
  }
};

TEST_F(LibraryReports, OfFivePercentDoNotMakeTheItemPlayable) {
  startAndReport(film());
  library_.progress(kUid, 5);
  EXPECT_THAT(log_.lines(), ElementsAre("manager.updateDownloadProgress 7 5"));
}

TEST_F(LibraryReports, OfSixPercentMakeTheItemPlayable) {
  startAndReport(film());
  library_.progress(kUid, 6);
  EXPECT_THAT(log_.lines(),
              ElementsAre("manager.updateDownloadProgress 7 6", "manager.setPlayable 7 true"));
}

TEST_F(LibraryReports, OutsideOfZeroToAHundredAreIgnored) {
  startAndReport(film());
  library_.progress(kUid, -1);
  library_.progress(kUid, 101);
  EXPECT_THAT(log_.lines(), IsEmpty());
  library_.progress(kUid, 0);
  library_.progress(kUid, 100);
  EXPECT_THAT(
      log_.lines("manager.updateDownloadProgress"),
      ElementsAre("manager.updateDownloadProgress 7 0", "manager.updateDownloadProgress 7 100"));
}

TEST_F(LibraryReports, PlayAnItemOnRequestOnce) {
  manager_.answerPlay(true);
  startAndReport(filmToPlay());
  library_.progress(kUid, 5);
  library_.progress(kUid, 6);
  library_.progress(kUid, 7);
  EXPECT_THAT(
      log_.lines(),
      ElementsAre("manager.updateDownloadProgress 7 5", "manager.updateDownloadProgress 7 6",
                  "manager.setPlayable 7 true", "manager.play 7",
                  "manager.updateDownloadProgress 7 7", "manager.setPlayable 7 true"));
}

TEST_F(LibraryReports, PlayThroughAFunctionInsteadOfTheManager) {
  worker_->setPlayback([this](unsigned int id) {
    log_.add("playback " + std::to_string(id));
    return true;
  });
  startAndReport(filmToPlay());
  library_.progress(kUid, 6);
  library_.progress(kUid, 7);
  EXPECT_EQ(log_.count("playback 7"), 1u);
  EXPECT_EQ(log_.count("manager.play 7"), 0u);
}

TEST_F(LibraryReports, PlayThroughAFunctionWithoutAManagerToo) {
  worker_->setInterfaces(nullptr, nullptr);
  worker_->setPlayback([](unsigned int) { return true; });
  auto item = film();
  item->setAutoProgressivePlayback(true);
  start(std::move(item));
  ASSERT_TRUE(waitFor("library.start " + urlOf("movie.vesk")));
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  EXPECT_FALSE(worker_->getItem()->getAutoProgressivePlayback());
}

TEST_F(LibraryReports, TryToPlayAgainAfterAFailure) {
  startAndReport(filmToPlay());
  library_.progress(kUid, 6);
  library_.progress(kUid, 7);
  EXPECT_EQ(log_.count("manager.play 7"), 2u);
}

TEST_F(LibraryReports, OfCompletionMakeTheItemPlayableBeforeTheRunEnds) {
  startAndReport(film());
  finish();
  EXPECT_EQ(log_.lines().front(), "manager.setPlayable 7 true");
}

TEST_F(LibraryReports, OfABreakTellTheViewAndFailTheItem) {
  startAndReport(film());
  DownloadStatusEnumType whenBroken = DownloadStatusQueued;
  DownloadStatusEnumType whenRefreshed = DownloadStatusQueued;
  view_.onEvent([&](const std::string& line) {
    if (line.starts_with("view.broken")) whenBroken = worker_->getItem()->getStatus();
    if (line == "view.refresh 7") whenRefreshed = worker_->getItem()->getStatus();
  });
  library_.broke(kUid, 5);
  EXPECT_EQ(ended(), 6);
  EXPECT_EQ(whenBroken, DownloadStatusDownloading);
  EXPECT_EQ(whenRefreshed, DownloadStatusFailed);
  EXPECT_THAT(log_.lines(), ElementsAre("view.broken " + media("movie.vesk"), "view.refresh 7",
                                        "manager.updateStatus 7 6"));
}

TEST_F(LibraryReports, OfABreakFailTheItemWithoutAView) {
  worker_->setInterfaces(&manager_, nullptr);
  startAndReport(film());
  library_.broke(kUid);
  EXPECT_EQ(ended(), 6);
  EXPECT_EQ(worker_->getItem()->getStatus(), DownloadStatusFailed);
  EXPECT_THAT(views(), IsEmpty());
}

TEST_F(LibraryReports, OfTheBeginAndOfHeadersDoNothing) {
  startAndReport(film());
  library_.began(kUid);
  library_.header(kUid, "Content-Length: 7\r\n");
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(LibraryReports, OfAnEarlierRunNeverTouchTheNextItem) {
  startAndReport(film());
  finish();
  log_.clear();
  startAndReport(film("second.vesk"), kUid + 1);
  library_.progress(kUid, 50);
  library_.broke(kUid);
  EXPECT_THAT(log_.lines(), IsEmpty());
  library_.complete(kUid + 1);
  EXPECT_EQ(ended(), 4);
}

TEST_F(LibraryReports, AfterTheEndOfTheRunAreIgnored) {
  startAndReport(film());
  finish();
  log_.clear();
  library_.progress(kUid, 50);
  library_.broke(kUid);
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(LibraryReports, AfterTheOutcomeDoNotChangeIt) {
  startAndReport(film());
  manager_.onEvent([this](const std::string& line) {
    if (line == "manager.updateDownloadProgress 7 100") library_.broke(kUid);
  });
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  EXPECT_THAT(views(), IsEmpty());
}

TEST_F(LibraryReports, ThatNameNoSessionAreThoseOfThePresentOne) {
  startAndReport(film());
  library_.progress(0, 3);
  library_.complete(0);
  EXPECT_EQ(ended(), 4);
  EXPECT_TRUE(log_.has("manager.updateDownloadProgress 7 3"));
}

TEST_F(LibraryReports, ThatComeBeforeTheSessionIsKnownWaitForIt) {
  library_.whileStarting([this](unsigned long long uid) {
    library_.progress(uid, 4);
    library_.progress(uid, 8);
    library_.complete(uid);
  });
  EXPECT_EQ(run(film()), 4);
  const auto lines = reports();
  const auto first = std::find(lines.begin(), lines.end(), "manager.updateStatus 7 3");
  EXPECT_THAT(std::vector(first, lines.end()),
              ElementsAre("manager.updateStatus 7 3", "manager.updateDownloadProgress 7 4",
                          "manager.updateDownloadProgress 7 8", "manager.setPlayable 7 true",
                          "manager.setPlayable 7 true", "manager.updateDownloadProgress 7 100",
                          "manager.updateStatus 7 4"));
}

// A busy machine may take longer to open the session than a report waits.
TEST_F(LibraryReports, OnAnotherThreadBeforeTheSessionIsKnownAreHandledWhenTheyReturn) {
  bool isHandled = false;
  for (int tries = 0; !isHandled && tries < 10; ++tries) isHandled = isHandledAtItsReturn();
  EXPECT_TRUE(isHandled);
}

TEST_F(LibraryReports, ThatTheStartOfTheSessionWaitsForEndByThemselves) {
  library_.whileStarting([this](unsigned long long uid) {
    std::thread([&] {
      for (int percent = 1; percent <= 100; ++percent) library_.progress(uid, percent);
    }).join();
    library_.complete(uid);
  });
  EXPECT_EQ(run(film()), 4);
  EXPECT_TRUE(log_.has("manager.updateDownloadProgress 7 99"));
}

TEST_F(LibraryReports, OfABreakBeforeTheSessionIsKnownFailTheRun) {
  library_.whileStarting([this](unsigned long long uid) { library_.broke(uid); });
  EXPECT_EQ(run(film()), 6);
  EXPECT_TRUE(log_.has("view.refresh 7"));
}

TEST_F(LibraryReports, FromTheLibrarysOwnThreadRaceWithNothing) {
  startAndReport(film());
  for (int percent = 1; percent <= 100; ++percent) {
    library_.onOwnThread([this, percent] { library_.progress(kUid, percent); });
  }
  library_.onOwnThread([this] { library_.complete(kUid); });
  EXPECT_EQ(ended(), 4);
  EXPECT_EQ(log_.lines("manager.updateDownloadProgress").size(), 101u);
}

TEST_F(LibraryReports, AreServedOneAtATime) {
  Gate& inside = gate();
  Gate& leave = gate();
  startAndReport(film());
  manager_.onEvent([&](const std::string& line) {
    if (line != "manager.updateDownloadProgress 7 1") return;
    inside.open();
    leave.wait();
  });
  const std::function<void()> others[] = {
      [this] { library_.progress(kUid, 2); }, [this] { library_.began(kUid); },
      [this] { library_.header(kUid, "Server: s\r\n"); }, [this] { library_.complete(kUid); }};
  library_.onOwnThread([this] { library_.progress(kUid, 1); });
  ASSERT_TRUE(inside.wait());
  std::deque<LockWaiter> waiting;
  for (const auto& other : others) EXPECT_TRUE(waiting.emplace_back(other).isHeldUp());
  EXPECT_THAT(log_.lines(), ElementsAre("manager.updateDownloadProgress 7 1"));
  leave.open();
  waiting.clear();
  EXPECT_EQ(ended(), 4);
}

}  // namespace
