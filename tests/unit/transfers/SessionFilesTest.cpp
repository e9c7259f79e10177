#include <gtest/gtest.h>

#include <utility>

#include "playerx/transfers/SessionFiles.h"
#include "tests/support/Gate.h"
#include "tests/support/WaitFor.h"
#include "tests/unit/transfers/PartialFixture.h"

namespace playerx::transfers {
namespace {

namespace fs = std::filesystem;

/// The test's thread is the engine's.
class SessionFilesTest : public PartialFixture {
 protected:
  void SetUp() override {
    ASSERT_TRUE(support::waitFor([this] { return queue_.isIdle(); }));
  }

  std::shared_ptr<SessionFiles> filesOf(const DownloadRequest& request) {
    const auto onEngine = [this](std::function<void()> work) {
      const GuardLock lock(mutex_);
      posted_.push_back(std::move(work));
    };
    return std::make_shared<SessionFiles>(std::make_shared<Session>(1, request), queue_, onEngine,
                                          kSyncEvery);
  }

  /// Keeps the files thread busy until the test lets it go on.
  void occupyFilesThread() {
    queue_.post([this] { goOn_.wait(); });
  }

  /// Does what was posted to the engine until `isDone`.
  bool workUntil(const std::function<bool()>& isDone) {
    return support::waitFor([&] {
      for (const auto& work : takePosted()) work();
      return isDone();
    });
  }

  static void append(Part& part, std::size_t bytes) {
    const std::string content = filmBytes(kFilmSize).substr(part.file().size(), bytes);
    EXPECT_EQ(part.file().append(content.data(), content.size()), 0);
    EXPECT_EQ(part.file().flush(), 0);
  }

  static constexpr std::uint64_t kSyncEvery = 100;

  support::Gate goOn_;
  bool isTold_ = false;
  const SessionFiles::Then tell_ = [this] { isTold_ = true; };

 private:
  std::vector<std::function<void()>> takePosted() {
    const GuardLock lock(mutex_);
    return std::exchange(posted_, {});
  }

  GuardMutex mutex_;
  std::vector<std::function<void()>> posted_ KVPM_GUARDED_BY(mutex_);

 protected:
  WorkQueue queue_;
};

TEST_F(SessionFilesTest, QuickWorkIsDoneAtOnce) {
  const auto files = filesOf(request());
  files->open(tell_);
  EXPECT_TRUE(isTold_);
  ASSERT_TRUE(files->opened().part);
  append(files->part(), kFilmSize);
  isTold_ = false;
  files->place("", tell_);
  EXPECT_TRUE(isTold_);
  EXPECT_EQ(files->placed().film, movie("film.avi"));
}

TEST_F(SessionFilesTest, QuickWorkWaitsForSlowWorkOfEarlierSessions) {
  occupyFilesThread();
  const auto files = filesOf(request());
  files->open(tell_);
  EXPECT_FALSE(isTold_);
  goOn_.open();
  EXPECT_TRUE(workUntil([&] { return isTold_; }));
  EXPECT_TRUE(files->opened().part);
}

TEST_F(SessionFilesTest, NothingIsToldOnceThePartialIsReleased) {
  occupyFilesThread();
  const auto files = filesOf(request());
  files->open(tell_);
  files->release();
  goOn_.open();
  EXPECT_TRUE(workUntil([&] { return queue_.isIdle(); }));
  EXPECT_TRUE(workUntil([&] { return !files->opened().part; }));
  EXPECT_FALSE(isTold_);
}

TEST_F(SessionFilesTest, AReleasedPartialIsFoundByTheNextSession) {
  partOf(request(), 400);
  const auto files = filesOf(request());
  files->open(tell_);
  ASSERT_EQ(files->part().file().size(), 400u);
  files->release();
  EXPECT_TRUE(workUntil([&] { return queue_.isIdle(); }));
  EXPECT_EQ(openPart(request()).part->file().size(), 400u);
}

TEST_F(SessionFilesTest, BytesAreSyncedOnceThereAreEnough) {
  partOf(request(), 50);
  const auto files = filesOf(request());
  files->open(tell_);
  append(files->part(), kSyncEvery - 1);
  files->syncIfDue();
  EXPECT_TRUE(queue_.isIdle());
  append(files->part(), 1);
  files->syncIfDue();
  EXPECT_TRUE(workUntil([&] { return files->part().state().durable == 50 + kSyncEvery; }));
}

TEST_F(SessionFilesTest, ACopyIsMadeOnTheFilesThread) {
  DownloadRequest across = request();
  const fs::path elsewhere = fs::path("/dev/shm") / folder_.path().filename();
  across.movies = elsewhere;
  const auto files = filesOf(across);
  files->open(tell_);
  append(files->part(), kFilmSize);
  isTold_ = false;
  files->place("", tell_);
  EXPECT_FALSE(isTold_);
  EXPECT_TRUE(workUntil([&] { return isTold_; }));
  EXPECT_EQ(files->placed().film, elsewhere / "film.avi");
  fs::remove_all(elsewhere);
}

}  // namespace
}  // namespace playerx::transfers
