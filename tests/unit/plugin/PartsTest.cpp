// What each part does with those below it. How they work together is tested with whole managers.

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <utility>

#include "playerx/platform/ThreadGate.h"
#include "tests/unit/plugin/PartsFixture.h"

namespace plugin {
namespace {

class MovesPart : public PartsFixture {};

TEST_F(MovesPart, AMoveOfTheHeadStopsTheTransferBeforeTheItemsChangePlaces) {
  given("A3 B1");
  std::string atStop;
  view_.onEvent([&](const std::string&) { atStop = text(); });
  EXPECT_TRUE(moves_.moveUp(id(1)));
  EXPECT_EQ(log_.lines(), (Lines{"worker.stopDownload 0", "worker.stop", "view.listChanged"}));
  EXPECT_EQ(atStop, "B1 A1");
}

TEST_F(MovesPart, AMoveBelowTheHeadStopsNothing) {
  given("A3 B1 C1");
  EXPECT_TRUE(moves_.moveUp(id(2)));
  EXPECT_EQ(text(), "A3 C1 B1");
  EXPECT_EQ(log_.lines(), Lines{"view.listChanged"});
}

TEST_F(MovesPart, RemovingAnnouncesWhatWasThereAlone) {
  given("A1 B4 C4");
  EXPECT_FALSE(moves_.remove(0));
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_TRUE(moves_.remove(id(0)));
  moves_.clearCompletedDownloads();
  EXPECT_EQ(text(), "");
  EXPECT_EQ(log_.count("view.listChanged"), 2U);
}

class SchedulerPart : public PartsFixture {
 protected:
  using Clock = std::chrono::steady_clock;

  /// Whether an idle scheduler leaves an item alone while one thing happens after the other. A busy
  /// machine may hold this thread up for so long that nothing did for a while: then once more.
  bool isLeftAlone(const std::function<void()>& start) {
    std::optional<bool> isAlone;
    for (int tries = 0; !isAlone && tries < 300; ++tries) {
      given("");
      log_.clear();
      isAlone = staysAlone(start);
      EXPECT_TRUE(log_.waitFor("worker.run A"));
      worker_.end(DownloadStatusCompleted);
      await("A4");
      scheduler_.stop();
    }
    return isAlone.value_or(false);
  }

 private:
  /// The calm that an idle scheduler waits for is 10 ms.
  static constexpr std::chrono::milliseconds kSoon{8};

  /// Nullopt when the things did not happen soon enough after each other.
  std::optional<bool> staysAlone(const std::function<void()>& start) {
    auto last = Clock::now();
    start();
    for (int i = 0; i < 20; ++i) {
      const auto before = std::exchange(last, Clock::now());
      queue_.events().raise();
      const bool isPicked = log_.waitFor("worker.run A", 1, std::chrono::milliseconds(1));
      if (Clock::now() - before > kSoon) return std::nullopt;
      if (isPicked) return false;
    }
    return true;
  }
};

TEST_F(SchedulerPart, TakesForOneWhatAHostDoesInARow) {
  EXPECT_TRUE(isLeftAlone([this] {
    scheduler_.start();
    given("A1");
  }));
}

TEST_F(SchedulerPart, PicksBesideAHostThatIsNeverIdle) {
  scheduler_.start();
  given("A1");
  std::atomic<bool> isPicked{false};
  std::thread host([this, &isPicked] {
    while (!isPicked) locked([] {});
  });
  EXPECT_TRUE(log_.waitFor("worker.run A"));
  isPicked = true;
  host.join();
}

TEST_F(SchedulerPart, TakesForOneWhatAHostDoesRightAfterTheStart) {
  EXPECT_TRUE(isLeftAlone([this] {
    playerx::ThreadGate::close();
    scheduler_.start();
    given("A1");
    playerx::ThreadGate::open();
  }));
}

/// An item that counts how often its status is asked for, on whatever thread.
struct CountingItem : DownloadItem {
  DownloadStatusEnumType getStatus() const override {
    ++looks;
    return DownloadItem::getStatus();
  }

  mutable std::atomic<long> looks{0};
};

TEST_F(SchedulerPart, DoesNotSpinWhileNothingCanBePicked) {
  auto* const held = new CountingItem;
  held->setStatus(DownloadStatusHeld);
  queue_.use([held](DownloadQueue& items) { items.assign({held}); });
  scheduler_.start();
  for (int event = 0; event < 10; ++event) {
    const long before = held->looks;
    queue_.events().raise();
    ASSERT_TRUE(support::waitFor([&] { return held->looks > before; }));
  }
  EXPECT_LT(held->looks, 1000);
}

TEST_F(SchedulerPart, CarriesItemsFromPickToOutcome) {
  given("A4 B1 C1");
  scheduler_.start();
  ASSERT_TRUE(log_.waitFor("worker.run B"));
  await("B1 A4 C1");
  worker_.end(DownloadStatusFailed);
  ASSERT_TRUE(log_.waitFor("worker.run C"));
  worker_.end(DownloadStatusCompleted);
  await("A4 B6 C4");
}

TEST_F(SchedulerPart, PreparesTheWorkerBeforeTheRun) {
  given("A1");
  scheduler_.start();
  ASSERT_TRUE(log_.waitFor("worker.run A"));
  EXPECT_EQ(log_.lines("worker."), (Lines{"worker.prepare", "worker.run A"}));
}

TEST_F(SchedulerPart, PicksAStoppedItemAgain) {
  given("A1");
  scheduler_.start();
  ASSERT_TRUE(log_.waitFor("worker.run A"));
  transfers_.cancel();
  EXPECT_TRUE(log_.waitFor("worker.run A", 2));
}

TEST_F(SchedulerPart, QueuesTheWorkersCopyOfAStoppedItemAnew) {
  given("A3");
  scheduler_.start();
  ASSERT_TRUE(log_.waitFor("worker.run A"));
  transfers_.pause();
  ASSERT_TRUE(log_.waitFor("view.listChanged", 4)) << "two of the pick, the pause, the outcome";
  EXPECT_EQ(worker_.getItem()->getStatus(), DownloadStatusQueued);
}

TEST_F(SchedulerPart, GivesTheWorkersCopyTheOutcome) {
  given("A3");
  scheduler_.start();
  ASSERT_TRUE(log_.waitFor("worker.run A"));
  worker_.end(DownloadStatusFailed);
  ASSERT_TRUE(log_.waitFor("view.keepsRunning"));
  EXPECT_EQ(worker_.getItem()->getStatus(), DownloadStatusFailed);
}

TEST_F(SchedulerPart, PicksNothingWhilePausedOrClosing) {
  given("A1");
  transfers_.pause();
  scheduler_.start();
  transfers_.close();
  transfers_.resume();
  scheduler_.stop();
  EXPECT_TRUE(log_.lines("worker.run").empty());
}

TEST_F(SchedulerPart, EndsWhenItIsStopped) {
  scheduler_.start();
  scheduler_.stop();
  given("A1");
  queue_.events().raise();
  scheduler_.start();
  EXPECT_TRUE(log_.waitFor("worker.run A")) << "and may be started anew";
}

class PlaybackPart : public PartsFixture {};

TEST_F(PlaybackPart, PlaysTheFilmOfThePresentTransferAlone) {
  given("A3 B3");
  for (unsigned int i = 0; i < 2; ++i) {
    queue_.change(id(i), [](auto& item) {
      item.setUrl(L"http://film");
      item.setPercentDownloaded(50);
    });
  }
  EXPECT_FALSE(playback_.playRunning(id(0)));
  locked([this]() KVPM_NO_ANALYSIS { transfers_.prepare(id(0)); });
  EXPECT_FALSE(playback_.playRunning(id(1)));
  EXPECT_TRUE(playback_.playRunning(id(0)));
  EXPECT_EQ(log_.lines("player."), Lines{"player.open http://film"});
}

TEST_F(PlaybackPart, WithoutAContextThereIsNoPlayer) {
  given("A4");
  EXPECT_TRUE(playback_.play(id(0)));
  EXPECT_FALSE(Playback(queue_, lock_, transfers_, moves_, nullptr).play(id(0)));
}

class IntakePart : public PartsFixture {};

TEST_F(IntakePart, AnAddressIsQueuedAnnouncedAndDownloaded) {
  ASSERT_NE(intake_.add(L"http://h/a.avi", L"A", L"P"), nullptr);
  EXPECT_EQ(log_.count("view.itemsAdded"), 1U);
  // The scheduler may announce its pick meanwhile.
  Lines first = log_.lines("view.");
  first.resize(2);
  EXPECT_EQ(first, (Lines{"view.listChanged", "view.listChanged"}));
  EXPECT_TRUE(log_.waitFor("worker.run A"));
}

TEST_F(IntakePart, AnItemThatTheQueueRefusesStartsNothing) {
  given("A0");
  queue_.change(id(0), [](auto& item) { item.setTicket("t"); });
  VeskDrmTicketData record;
  record.ticket = "t";
  services_.setTicketRecords({record});
  const auto added = intake_.addTicket(L"/t.tix");
  ASSERT_EQ(added.size(), 1U);
  EXPECT_EQ(added[0]->getTicket(), "t") << "kept for the caller";
  EXPECT_EQ(queue_.size(), 1U);
  EXPECT_TRUE(log_.lines("worker.").empty());
}

class ProgressPart : public PartsFixture {};

TEST_F(ProgressPart, ReportsTakeNoOperationLock) {
  given("A1");
  const unsigned int a = id(0);
  ASSERT_TRUE(lock_.tryEnter());
  std::thread other([this, a] {
    EXPECT_TRUE(progress_.updateStatus(a, DownloadStatusDownloading));
    EXPECT_TRUE(progress_.updateDownloadProgress(a, 50));
    EXPECT_TRUE(progress_.updatePath(a, L"/a"));
  });
  other.join();
  lock_.leave();
  EXPECT_EQ(text(), "A3");
}

TEST_F(ProgressPart, AnEndIsAnEventOnceItsItemHasSunk) {
  given("A7 B1");
  const plugin::EventCount::Key before = queue_.events().key();
  bool isAwaited = true;
  view_.onEvent([&](const std::string&) {
    isAwaited = isAwaited && text() != "B1 A6";
    EXPECT_EQ(queue_.events().key() == before, isAwaited) << text();
  });
  progress_.updateStatus(id(0), DownloadStatusFailed);
  EXPECT_FALSE(isAwaited);
}

TEST_F(ProgressPart, EndedItemsSinkToTheBottom) {
  given("A3 B1 C4");
  progress_.updateStatus(id(0), DownloadStatusFailed);
  EXPECT_EQ(text(), "B1 C4 A6");
}

}  // namespace
}  // namespace plugin
