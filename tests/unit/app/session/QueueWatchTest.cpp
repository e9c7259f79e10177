#include <gmock/gmock.h>

#include <atomic>
#include <chrono>

#include "playerx/app/session/QueueWatch.h"
#include "playerx/transfers/FilmRecovery.h"
#include "tests/support/WaitFor.h"
#include "tests/unit/app/FakeSession.h"

namespace playerx::session {

using SteadyTime = std::chrono::steady_clock::time_point;

// The linker redirects the program's calls of the clock to `testNow`.
SteadyTime realNow() __asm__("__real__ZNSt6chrono3_V212steady_clock3nowEv");
SteadyTime testNow() __asm__("__wrap__ZNSt6chrono3_V212steady_clock3nowEv");

namespace {

std::atomic<std::chrono::seconds::rep> secondsAhead = 0;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Kind = QueueEvent::Kind;

/// Sets the clock ahead while it lives.
class ClockAhead {
 public:
  explicit ClockAhead(std::chrono::seconds time) { secondsAhead = time.count(); }
  ~ClockAhead() { secondsAhead = 0; }
  ClockAhead(const ClockAhead&) = delete;
  ClockAhead& operator=(const ClockAhead&) = delete;
};

/// A watch whose servers answer with "not found".
class QueueWatchTest : public testing::Test {
 protected:
  QueueWatch& watch() {
    if (!watch_) {
      watch_.emplace(
          fake_.session(), model::QueueTracker::Keep::kUnlessComplete, [] {},
          [](const std::string& address, const std::stop_token&) {
            return reasons::ProbeResult{address, {}, "", 404, 5};
          },
          [this](const QueueEvent& event) { events_.push_back(event); });
    }
    return *watch_;
  }

  /// Whether the watch comes to know why its only film has failed.
  bool watchAFailure() {
    DownloadItem& film = fake_.module.put("http://h/a.avi");
    watch();
    film.setStatus(DownloadStatusFailed);
    return support::waitFor([this] {
      watch().update();
      return watch().isIdle();
    });
  }

  std::vector<Kind> kinds() const {
    std::vector<Kind> list;
    for (const QueueEvent& event : events_) list.push_back(event.kind);
    return list;
  }

  FakeRecovery recovery_;
  FakeSession fake_;
  std::vector<QueueEvent> events_;
  std::optional<QueueWatch> watch_;
};

TEST_F(QueueWatchTest, WhatWasThereBeforeIsNotTold) {
  fake_.module.put("http://h/a.avi");
  watch().update();
  EXPECT_THAT(events_, IsEmpty());
  EXPECT_EQ(watch().queue().size(), 1u);
}

TEST_F(QueueWatchTest, AFilmThatTheQueueCallsCompleteIsConfirmed) {
  offer<FilmRecovery>(fake_.session().plugins(), DIN_FilmRecovery, &recovery_);
  fake_.session().start();
  DownloadItem& film = fake_.module.put("http://h/a.avi", DownloadStatusDownloading);
  fake_.module.put("http://h/b.avi", DownloadStatusDownloading).setStatus(DownloadStatusPaused);
  watch();
  film.setStatus(DownloadStatusCompleted);
  watch().update();
  EXPECT_THAT(recovery_.confirmed, ElementsAre("http://h/a.avi"));
}

TEST_F(QueueWatchTest, AnotherOrderOfTheSameItemsIsToldOnce) {
  fake_.module.put("http://h/a.avi");
  fake_.module.put("http://h/b.avi");
  watch();
  fake_.module.moveToEnd(0);
  watch().update();
  watch().update();
  EXPECT_THAT(kinds(), ElementsAre(Kind::kMoved));
}

TEST_F(QueueWatchTest, EveryStepOfAFilmIsTold) {
  watch();
  DownloadItem& film = fake_.module.put("http://h/a.avi");
  watch().update();
  film.setStatus(DownloadStatusDownloading);
  watch().update();
  EXPECT_FALSE(watch().isIdle());
  film.setStatus(DownloadStatusCompleted);
  watch().update();
  EXPECT_TRUE(watch().isIdle());
  EXPECT_THAT(kinds(), ElementsAre(Kind::kAdded, Kind::kChanged, Kind::kFinished));
}

TEST_F(QueueWatchTest, AFilmInItsPlaceIsNotToldAsQueuedBeforeItIsComplete) {
  DownloadItem& film = fake_.module.put("http://h/a.avi", DownloadStatusDownloading);
  fake_.reports.isThere = true;
  fake_.reports.last.phase = TransferPhase::kComplete;
  fake_.session().start();
  watch();
  film.setStatus(DownloadStatusQueued);  // as an addition leaves the film that is arriving
  watch().update();
  film.setStatus(DownloadStatusCompleted);
  watch().update();
  EXPECT_THAT(kinds(), ElementsAre(Kind::kFinished));
}

TEST_F(QueueWatchTest, AFilmThatCameToAnotherFolderHasItsPathThere) {
  DownloadItem& film = fake_.module.put("http://h/a.avi", DownloadStatusDownloading);
  film.setPath(L"/former/a.avi");
  fake_.reports.isThere = true;
  fake_.reports.last.finalPath = "/films/a.avi";
  fake_.session().start();
  watch();
  film.setStatus(DownloadStatusCompleted);
  watch().update();
  ASSERT_FALSE(events_.empty());
  EXPECT_EQ(events_.back().item.path, "/films/a.avi");
  EXPECT_EQ(fake_.log.lines("manager.updatePath").size(), 1u);
}

TEST_F(QueueWatchTest, AFailureIsToldWithItsReason) {
  ASSERT_TRUE(watchAFailure());
  ASSERT_THAT(kinds(), ElementsAre(Kind::kFailed));
  EXPECT_EQ(events_[0].reason.code(), "http_404");
  EXPECT_THAT(fake_.log.lines("manager.updateDownloadProgress"), IsEmpty());
}

TEST_F(QueueWatchTest, NothingHasArrivedOfAFilmThatWasDeletedForItsChecksum) {
  fake_.reports.isThere = true;
  fake_.reports.last.failure = TransferFailure::kChecksum;
  fake_.session().start();
  ASSERT_TRUE(watchAFailure());
  const std::string id = std::to_string(fake_.module.all()[0]->getId());
  EXPECT_THAT(fake_.log.lines("manager.updateDownloadProgress"),
              ElementsAre("manager.updateDownloadProgress " + id + " 0"));
}

TEST_F(QueueWatchTest, TheReasonOfAFailureIsKeptForLaterRuns) {
  ASSERT_TRUE(watchAFailure());
  const reasons::ReasonFile file(fake_.session().places().data);
  const auto reason = file.find(watch().queue().kept()[0]);
  ASSERT_TRUE(reason);
  EXPECT_EQ(reason->code(), "http_404");
}

TEST_F(QueueWatchTest, TheReasonOfARemovedItemIsForgotten) {
  ASSERT_TRUE(watchAFailure());
  const std::string file = fake_.session().places().data + "/failures.json";
  EXPECT_THAT(support::readFile(file), HasSubstr("http://h/a.avi"));
  fake_.module.drop(0);
  watch().update();
  EXPECT_THAT(support::readFile(file), testing::Not(HasSubstr("http://h/a.avi")));
}

TEST_F(QueueWatchTest, ARemovedItemIsTold) {
  fake_.module.put("http://h/a.avi");
  watch();
  fake_.module.drop(0);
  watch().update();
  ASSERT_THAT(kinds(), ElementsAre(Kind::kRemoved));
  EXPECT_EQ(events_[0].item.url, "http://h/a.avi");
}

TEST_F(QueueWatchTest, WhatArrivesIsMeasured) {
  fake_.module.put("http://h/a.avi", DownloadStatusDownloading);
  fake_.reports.isThere = true;
  fake_.session().start();
  watch().measure();
  EXPECT_THAT(kinds(), IsEmpty()) << "what an earlier run has left is not known yet";
  fake_.reports.last.partialPath = "/partial/a";
  watch().measure();
  EXPECT_THAT(kinds(), ElementsAre(Kind::kChanged));
}

TEST_F(QueueWatchTest, TheSilenceOfAServerThatIsAskedIsTold) {
  fake_.module.put("http://h/a.avi");
  fake_.session().start();
  watch().measure();
  const ClockAhead clock(model::kShortestSilence);
  watch().measure();
  ASSERT_THAT(kinds(), ElementsAre(Kind::kChanged));
  EXPECT_GE(events_[0].progress.silentSeconds, 5u);
}

TEST_F(QueueWatchTest, NoServerIsSilentWhileNothingIsDownloaded) {
  fake_.module.put("http://h/a.avi");
  const auto measureLater = [this] {
    watch().measure();
    const ClockAhead clock(model::kShortestSilence);
    watch().measure();
  };
  measureLater();
  fake_.session().start();
  fake_.module.isPausedNow = true;
  measureLater();
  EXPECT_THAT(kinds(), IsEmpty());
}

TEST_F(QueueWatchTest, WhatPlugInsSayIsPassedOn) {
  watch();
  const auto messages = KPIM::load<UserMessages>(&fake_.session().plugins(), kUserMessagesId);
  messages->get()->tellUser("Hello.");
  watch().update();
  ASSERT_THAT(kinds(), ElementsAre(Kind::kNote));
  EXPECT_EQ(events_[0].sentence, "Hello.");
}

TEST_F(QueueWatchTest, AFilmIsPlayedOnceAsSoonAsEnoughOfItIsThere) {
  fake_.module.answerPlay(true);
  DownloadItem& film = fake_.module.put("http://h/a.avi");
  watch().playWhenReady(film.getId());
  film.setStatus(DownloadStatusDownloading);
  watch().update();
  EXPECT_THAT(fake_.log.lines("manager.play"), IsEmpty());
  film.setReadyForProgressivePlayback(true);
  watch().update();
  film.setStatus(DownloadStatusCompleted);
  watch().update();
  EXPECT_EQ(fake_.log.lines("manager.play").size(), 1u);
}

TEST_F(QueueWatchTest, APlayerThatDoesNotStartIsSaid) {
  fake_.module.answerPlay(false);
  DownloadItem& film = fake_.module.put("http://h/a.avi", DownloadStatusCompleted);
  watch().playWhenReady(film.getId());
  ASSERT_THAT(kinds(), ElementsAre(Kind::kNote));
  EXPECT_THAT(events_[0].sentence, HasSubstr("No player could be started"));
}

}  // namespace

SteadyTime testNow() { return realNow() + std::chrono::seconds(secondsAhead); }

}  // namespace playerx::session
