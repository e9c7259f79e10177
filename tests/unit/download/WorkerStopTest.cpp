// Stops, pauses and ends at every moment of a run.

#include <atomic>
#include <functional>
#include <mutex>
#include <stdexcept>

#include "download/HttpDownloadThreadImpl.h"
#include "tests/support/LockWaiter.h"
#include "tests/support/Loopback.h"
#include "tests/support/Promptness.h"
#include "tests/unit/download/WorkerFixture.h"

namespace {

using support::Gate;
using support::Script;
using testing::ElementsAre;
using testing::IsEmpty;

class WorkerStop : public support::WorkerTest {
 protected:
  /// Starts, and waits until the server has taken that much of the question; it never answers.
  void startAndHang(Script taken, const std::wstring& scheme = L"http") {
    Gate& hanging = gate();
    server_.always(taken.announce(hanging).stall());
    auto item = film();
    item->setUrl(scheme + item->getUrl().substr(4));
    start(std::move(item));
    ASSERT_TRUE(hanging.wait());
  }

  /// Stops runs that `begin` has brought to where they hang: promptly, and as stopped.
  void expectPromptStop(const std::function<void()>& begin) {
    const auto stopped = [&] {
      begin();
      const auto took = support::timeOf([this] { worker_->stop(); });
      EXPECT_EQ(ended(), 5);
      return took;
    };
    EXPECT_LT(support::bestTime(stopped), support::kPromptly);
  }

  /// Stops a run that `report` makes begin a play, which needs a lock that the stopper holds: as
  /// the host does with the manager's.
  void expectStopDespitePlay(const std::function<void()>& report, int outcome) {
    std::mutex managersLock;
    manager_.onEvent([&](const std::string& line) {
      if (line != "manager.play 7") return;
      asked_.open();
      const std::lock_guard lock(managersLock);
    });
    startAndFetch(filmToPlay());
    {
      const std::lock_guard lock(managersLock);
      library_.onOwnThread(report);
      ASSERT_TRUE(asked_.wait());
      worker_->stop();
      EXPECT_EQ(ended(), outcome);
    }
    EXPECT_TRUE(library_.waitUntilIdle());
    worker_->close();
  }

  Gate& asked_ = gate();
};

TEST_F(WorkerStop, OfALibraryThatThrowsStopsNoLaterRun) {
  startAndFetch(film());
  library_.whileStopping([] { throw std::runtime_error("no"); });
  worker_->stop();
  EXPECT_EQ(ended(), 5);
  library_.whileStopping({});
  log_.clear();
  startAndFetch(film());
  library_.complete(kUid + 1);
  EXPECT_EQ(ended(), 4);
}

TEST_F(WorkerStop, OfALibraryThatThrowsEndsTheWorkerToo) {
  startAndFetch(film());
  library_.whileStopping([] { throw std::runtime_error("no"); });
  worker_->close();
  EXPECT_EQ(ended(), 5);
  EXPECT_FALSE(library_.hasCallback());
}

TEST_F(WorkerStop, WithNothingRunningReturnsAtOnce) {
  worker_->stop();
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(WorkerStop, OfAnIdleWorkerDoesNotStopTheNextRun) {
  worker_->stop();
  startAndFetch(film());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
}

TEST_F(WorkerStop, DuringTheTransferEndsTheRunThenTheSession) {
  expectPromptStop([this] {
    startAndFetch(film());
    log_.clear();
  });
  const auto uid = kUid + library_.sessionCount() - 1;
  EXPECT_THAT(log_.lines(), ElementsAre("library.stop " + std::to_string(uid)));
}

TEST_F(WorkerStop, DuringTheQuestionForTheSizeEndsTheRun) {
  expectPromptStop([this] { startAndHang(Script().readRequest()); });
  EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(WorkerStop, DuringAHandshakeEndsTheRun) {
  expectPromptStop([this] { startAndHang(Script().readBytes(1), L"https"); });
}

TEST_F(WorkerStop, DuringAHangingConnectEndsTheRun) {
  const support::SilentPort silent;
  expectPromptStop([&] {
    auto item = film();
    item->setUrl(L"http://127.0.0.1:" + std::to_wstring(silent.port()) + L"/movie.vesk");
    start(std::move(item));
    ASSERT_TRUE(support::waitFor([&] { return support::isConnecting(silent.port()); }));
  });
  EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(WorkerStop, DuringTheQuestionForTheSizeLeavesTheNextRunAlone) {
  startAndHang(Script().readRequest());
  worker_->stop();
  EXPECT_EQ(ended(), 5);
  server_.always(Script::answer(support::bareResponse("200 OK", "Content-Length: 7168\r\n")));
  startAndFetch(film());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
}

TEST_F(WorkerStop, DuringARedirectLoopEndsTheRun) {
  std::size_t attempts = 0;
  expectPromptStop([&] {
    ++attempts;
    server_.next(Script::answer("HTTP/1.0 200 OK\r\nLocation: " + server_.url("/on") + "\r\n\r\n"));
    startAndHang(Script().readRequest());
  });
  EXPECT_EQ(server_.connectionCount(), 2 * attempts);
  EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(WorkerStop, FromTheReportOfTheSizeOrTheInfoStartsNoSession) {
  const struct {
    const char* report;
    const char* next;
  } rows[] = {
      {"manager.updateSize 7 7168", "manager.setDownloadInfo"},
      {"manager.setDownloadInfo 7", "manager.updateStatus"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.report);
    log_.clear();
    manager_.onEvent([&](const std::string& line) {
      if (line == row.report) worker_->stop();
    });
    EXPECT_EQ(run(film()), 5);
    EXPECT_EQ(library_.sessionCount(), 0u);
    EXPECT_TRUE(log_.has(row.report));
    EXPECT_THAT(log_.lines(row.next), IsEmpty());
  }
}

TEST_F(WorkerStop, BetweenPickAndStartIsNotLost) {
  worker_->prepare();
  worker_->stop();
  EXPECT_EQ(run(film()), 5);
  EXPECT_THAT(reports(), IsEmpty());
  EXPECT_EQ(library_.sessionCount(), 0u);
}

TEST_F(WorkerStop, BetweenPickAndStartStopsThatRunAlone) {
  worker_->prepare();
  worker_->stop();
  EXPECT_EQ(run(film()), 5);
  worker_->prepare();
  startAndFetch(film());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
}

TEST_F(WorkerStop, TakesTheItemOfARunThatNeverBegins) {
  worker_->prepare();
  worker_->stop();
  auto item = film();
  const DownloadItem* const given = item.get();
  EXPECT_EQ(run(std::move(item)), 5);
  EXPECT_EQ(worker_->getItem(), given);
}

TEST_F(WorkerStop, OfNothingIsStillAFailure) {
  worker_->prepare();
  worker_->stop();
  EXPECT_EQ(worker_->downloadVideo(nullptr), 6);
  worker_->close();
  EXPECT_EQ(worker_->downloadVideo(nullptr), 6);
}

TEST_F(WorkerStop, WaitsForTheRunBeforeItStopsTheSession) {
  Gate& recorded = gate();
  Gate& leave = gate();
  manager_.onEvent([&](const std::string& line) {
    if (line != "manager.updateStatus 7 4") return;
    recorded.open();
    leave.wait();
  });
  player_.setCurrentMediaId(kUid);  // the run itself leaves the session alone
  startAndFetch(film());
  library_.complete(kUid);
  ASSERT_TRUE(recorded.wait());
  support::LockWaiter stopping([this] { worker_->stop(); });
  EXPECT_TRUE(stopping.isHeldUp());
  EXPECT_THAT(library_.stopped(), IsEmpty());
  leave.open();
  stopping.join();
  EXPECT_EQ(ended(), 4);
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
}

TEST_F(WorkerStop, ReturnsOnlyAfterTheRunHasReturned) {
  Gate& leave = gate();
  std::atomic<bool> reported{false};
  manager_.onEvent([&](const std::string& line) {
    if (line != "manager.updateSize 7 7168") return;
    asked_.open();
    leave.wait();
    reported = true;
  });
  start(film());
  ASSERT_TRUE(asked_.wait());
  support::LockWaiter stopping([&] {
    worker_->stop();
    EXPECT_TRUE(reported);
  });
  EXPECT_TRUE(stopping.isHeldUp());
  leave.open();
  stopping.join();
  EXPECT_EQ(ended(), 5);
}

TEST_F(WorkerStop, WaitsForARunThatHasYetToTakeItsLock) {
  HttpDownloadThread::HttpDownloadThreadImpl impl(&context_);
  impl.state().begin();
  support::LockWaiter stopping([&] { impl.stop(); });
  EXPECT_TRUE(stopping.isHeldUp());
  EXPECT_FALSE(impl.state().isRunning());
  impl.state().end();
  stopping.join();
}

TEST_F(WorkerStop, AfterCompletionDoesNotUndoIt) {
  startAndFetch(film());
  manager_.onEvent([this](const std::string& line) {
    if (line == "manager.updateDownloadProgress 7 100") asked_.open();
  });
  library_.complete(kUid);
  ASSERT_TRUE(asked_.wait());
  worker_->stop();
  EXPECT_EQ(ended(), 4);
  EXPECT_TRUE(log_.has("manager.updateStatus 7 4"));
}

TEST_F(WorkerStop, BeforeCompletionIsNotUndoneByIt) {
  startAndFetch(film());
  log_.clear();
  worker_->stop();
  library_.complete(kUid);
  EXPECT_EQ(ended(), 5);
  EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(WorkerStop, FromSeveralThreadsAtOnceReturnsOnAll) {
  startAndFetch(film());
  std::vector<std::future<void>> stops;
  for (int thread = 0; thread < 4; ++thread) {
    stops.push_back(elsewhere([this] { worker_->stop(); }));
  }
  for (auto& stop : stops) EXPECT_TRUE(returned(stop));
  EXPECT_EQ(ended(), 5);
}

TEST_F(WorkerStop, OfASessionByItsIdReturnsAtOnce) {
  worker_->stopDownload(5);
  EXPECT_THAT(log_.lines(), IsEmpty());  // the library is not loaded yet
  startAndFetch(film());
  worker_->stopDownload(5);
  EXPECT_THAT(library_.stopped(), ElementsAre(5u));
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
}

TEST_F(WorkerStop, OfASessionByItsIdDoesNotWaitForAReport) {
  Gate& leave = gate();
  manager_.onEvent([&](const std::string& line) {
    if (line != "manager.updateDownloadProgress 7 1") return;
    asked_.open();
    leave.wait();
  });
  startAndReport(film());
  library_.onOwnThread([this] { library_.progress(kUid, 1); });
  ASSERT_TRUE(asked_.wait());
  worker_->stopDownload(kUid);
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
  leave.open();
  EXPECT_TRUE(library_.waitUntilIdle());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
}

TEST_F(WorkerStop, DoesNotWaitForAPlayThatTheCompletionBegan) {
  expectStopDespitePlay([this] { library_.complete(kUid); }, 4);
  EXPECT_TRUE(log_.has("manager.updateStatus 7 4"));
}

TEST_F(WorkerStop, DoesNotWaitForAPlayThatAReportBegan) {
  expectStopDespitePlay([this] { library_.progress(kUid, 50); }, 5);
}

TEST_F(WorkerStop, MayComeFromWithinAPlay) {
  manager_.onEvent([&](const std::string& line) {
    if (line == "manager.play 7") worker_->stop();
  });
  startAndFetch(filmToPlay());
  library_.progress(kUid, 50);
  EXPECT_EQ(ended(), 5);
}

TEST_F(WorkerStop, OfManyRunsAtAnyMomentNeverHangs) {
  manager_.answerPlay(true);
  for (int round = 0; round < 20; ++round) {
    auto item = film();
    item->setAutoProgressivePlayback(round % 2 == 0);
    worker_->prepare();
    start(std::move(item));
    auto reporter = elsewhere([this, round] {
      const unsigned long long uid = kUid + static_cast<unsigned long long>(round);
      for (int percent = 0; percent <= 100; percent += 10) library_.progress(uid, percent);
      library_.complete(uid);
    });
    auto stopper = elsewhere([this] { worker_->stop(); });
    EXPECT_TRUE(returned(reporter));
    EXPECT_TRUE(returned(stopper));
    worker_->stop();
    const int outcome = ended();
    EXPECT_TRUE(outcome == 4 || outcome == 5) << outcome;
  }
}

TEST_F(WorkerStop, AfterARunReleasesItsSession) {
  player_.setCurrentMediaId(kUid);  // the run itself leaves the session alone
  startAndFetch(film());
  library_.complete(kUid);
  EXPECT_EQ(ended(), 4);
  EXPECT_THAT(library_.stopped(), IsEmpty());
  worker_->stop();
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
}

TEST_F(WorkerStop, AfterARunWithoutSessionStopsByTheItemsUid) {
  auto item = film();
  item->setUID(77);
  server_.always(Script::answer(support::bareResponse("404 Not Found")));
  EXPECT_EQ(run(std::move(item)), 6);
  worker_->stop();
  EXPECT_THAT(library_.stopped(), ElementsAre(77u));
}

TEST_F(WorkerStop, AfterARunOfNothingStopsNoSession) {
  EXPECT_EQ(worker_->downloadVideo(nullptr), 6);
  worker_->stop();
  EXPECT_THAT(library_.stopped(), IsEmpty());
}

TEST_F(WorkerStop, MayComeFromWithinAReport) {
  manager_.onEvent([this](const std::string& line) {
    if (line == "manager.updateDownloadProgress 7 50") worker_->stop();
  });
  startAndReport(film());
  library_.onOwnThread([this] { library_.progress(kUid, 50); });
  EXPECT_EQ(ended(), 5);
  EXPECT_TRUE(library_.waitUntilIdle());
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
}

}  // namespace
