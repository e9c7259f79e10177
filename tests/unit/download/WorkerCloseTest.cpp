// The end of a worker, at every moment of a run.

#include "download/HttpDownloadThreadImpl.h"
#include "tests/support/LockWaiter.h"
#include "tests/unit/download/WorkerFixture.h"

namespace {

using support::Gate;
using testing::ElementsAre;
using testing::IsEmpty;

using WorkerClose = support::WorkerTest;

TEST_F(WorkerClose, WaitsForARunThatHasYetToTakeItsLock) {
  HttpDownloadThread::HttpDownloadThreadImpl impl(&context_);
  impl.state().begin();
  support::LockWaiter closing([&] { impl.close(); });
  EXPECT_TRUE(closing.isHeldUp());
  impl.state().end();
  closing.join();
}

TEST_F(WorkerClose, ByDestructionWaitsForARunThatCameAfterTheClosing) {
  auto impl = std::make_unique<HttpDownloadThread::HttpDownloadThreadImpl>(&context_);
  impl->close();
  impl->state().begin();
  download::RunState& state = impl->state();
  support::LockWaiter destruction([&] { impl.reset(); });
  ASSERT_TRUE(destruction.isHeldUp());
  state.end();
  destruction.join();
}

TEST_F(WorkerClose, UnregistersFromTheLibrary) {
  startAndFetch(film());
  worker_->close();
  EXPECT_EQ(ended(), 5);
  EXPECT_FALSE(library_.hasCallback());
}

TEST_F(WorkerClose, StopsTheSession) {
  startAndFetch(film());
  worker_->close();
  EXPECT_EQ(ended(), 5);
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
}

TEST_F(WorkerClose, ReleasesABrokenSessionThatNoRunCould) {
  HttpDownloadThread::HttpDownloadThreadImpl impl(&context_);
  library_.whileStarting([this](unsigned long long uid) { library_.broke(uid); });
  EXPECT_EQ(impl.downloadVideo(film().release()), 6);
  impl.state().askToStop();
  EXPECT_EQ(impl.downloadVideo(film().release()), 5);
  impl.state().stopDone();
  impl.close();
  EXPECT_THAT(library_.stopped(), testing::Contains(kUid));
}

TEST_F(WorkerClose, WaitsForAReportWithoutHoldingItUp) {
  Gate& inside = gate();
  Gate& leave = gate();
  manager_.onEvent([&](const std::string& line) {
    if (line != "manager.updateDownloadProgress 7 1") return;
    inside.open();
    leave.wait();
  });
  startAndFetch(film());
  library_.onOwnThread([this] { library_.progress(kUid, 1); });
  ASSERT_TRUE(inside.wait());
  auto closing = elsewhere([this] { worker_->close(); });
  leave.open();
  EXPECT_TRUE(returned(closing));
  EXPECT_EQ(ended(), 5);
  EXPECT_TRUE(library_.waitUntilIdle());
}

TEST_F(WorkerClose, EndsEveryLaterRun) {
  worker_->close();
  worker_->close();
  EXPECT_EQ(run(film()), 5);
  worker_->prepare();
  EXPECT_EQ(run(film()), 5);
  EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(WorkerClose, ByDestructionEndsTheRun) {
  startAndFetch(film());
  library_.onOwnThread([this] {
    for (int percent = 0; percent <= 100; ++percent) library_.progress(kUid, percent);
  });
  worker_->close();
  EXPECT_EQ(ended(), 5);
  worker_.reset();
  EXPECT_EQ(context_.holds(KPB::DIN_Download), 0);
  EXPECT_FALSE(library_.hasCallback());
  EXPECT_THAT(library_.stopped(), ElementsAre(kUid));
}

TEST_F(WorkerClose, HasAPlayStopDuringTheDestruction) {
  Gate& asked = gate();
  manager_.onEvent([this, &asked, worker = worker_.get()](const std::string& line) {
    if (line != "manager.play 7") return;
    asked.open();
    log_.waitFor("library.callback none");  // the worker is closing
    worker->stop();
  });
  startAndReport(filmToPlay());
  library_.onOwnThread([this] { library_.progress(kUid, 50); });
  ASSERT_TRUE(asked.wait());
  worker_->stop();
  EXPECT_EQ(ended(), 5);
  EXPECT_TRUE(library_.waitUntilIdle());
  worker_.reset();
}

}  // namespace
