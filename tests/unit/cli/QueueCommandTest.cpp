#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <optional>
#include <thread>
#include <utility>

#include "playerx/app/door/DoorPath.h"
#include "playerx/app/door/DoorServer.h"
#include "playerx/app/door/Protocol.h"
#include "playerx/app/session/DataFolderLock.h"
#include "playerx/cli/QueueCommand.h"
#include "playerx/cli/WakeUp.h"
#include "tests/support/WaitFor.h"
#include "tests/unit/app/FakeSession.h"
#include "tests/unit/cli/LoggingReporter.h"

namespace playerx::cli {
namespace {

using Action = session::Request::Action;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr char kGone[] = "The player that held the queue has ended. Going on.";

/// Players that have the queue one after the other, each until it has been sent a line. Then the
/// queue is free.
class DyingPlayers {
 public:
  DyingPlayers(const std::string& dataFolder, int count) : lock_(std::in_place, dataFolder) {
    thread_ = std::jthread([this, dataFolder, count] {
      for (int player = 0; player < count; ++player) live(dataFolder);
      lock_.reset();
    });
  }

  int lives() const { return lives_; }

 private:
  void live(const std::string& dataFolder) {
    door::DoorServer server(write(door::Greeting{}), "", [] {});
    EXPECT_EQ(server.listen(door::doorPath(dataFolder)), "");
    if (support::waitFor([&server] { return !server.takeLines().empty(); })) ++lives_;
  }

  std::atomic<int> lives_ = 0;
  std::optional<session::DataFolderLock> lock_;
  std::jthread thread_;
};

class QueueCommandTest : public testing::Test {
 protected:
  // The module saves nothing.
  QueueCommandTest() { fake_.folder.write("data/downloadmanager.xml", "<DownloadQueue/>\n"); }

  int run(session::Request request) {
    options_.request = std::move(request);
    return runOnQueue(options_, fake_.session(), reporter_, wakeUp_);
  }

  int get(const std::string& address) {
    options_.command = Options::kGet;
    fake_.module.atEachLook([this] {
      for (const auto& item : fake_.module.all()) {
        const bool isTold = !reporter_.lines.empty() && reporter_.lines.back().starts_with("added");
        if (isTold) item->setStatus(DownloadStatusCompleted);
      }
    });
    return run({.action = Action::kAdd, .inputs = {address}});
  }

  std::string data() { return fake_.session().places().data; }

  WakeUp wakeUp_;
  FakeSession fake_{[this] { wakeUp_.raise(); }, false};
  LoggingReporter reporter_;
  Options options_;
};

TEST_F(QueueCommandTest, AGetGoesOnHereOnceThePlayerThatHadTheQueueHasEnded) {
  const DyingPlayers others(data(), 1);
  EXPECT_EQ(get("http://h/a.avi"), kExitDone);
  EXPECT_THAT(reporter_.lines, ElementsAre(kGone, "added http://h/a.avi", "finished"));
}

TEST_F(QueueCommandTest, AMediaFolderIsSaidOnceToHaveNoEffectElsewhere) {
  const DyingPlayers others(data(), 2);
  options_.session.mediaFolder = "/films";
  EXPECT_EQ(get("http://h/a.avi"), kExitDone);
  EXPECT_THAT(reporter_.lines, ElementsAre(HasSubstr("whatever --media says"), kGone, kGone,
                                           "added http://h/a.avi", "finished"));
}

TEST_F(QueueCommandTest, ARequestIsGivenUpAfterTwentyPlayersThatEnded) {
  const DyingPlayers others(data(), 20);
  options_.command = Options::kRequest;
  EXPECT_EQ(run({.action = Action::kPause}), kExitFailed);
  EXPECT_EQ(others.lives(), 20);
  EXPECT_THAT(reporter_.lines, ElementsAre(HasSubstr("ends each time before it answers")));
}

class RequestTest : public QueueCommandTest,
                    public testing::WithParamInterface<std::pair<Action, bool>> {};

TEST_P(RequestTest, ReservesRoomOnTheDiskUnlessItMakesSome) {
  const auto [action, reserves] = GetParam();
  options_.command = Options::kRequest;
  fake_.module.put("http://h/a.avi");
  EXPECT_EQ(run({.action = action, .position = 1}), kExitDone);
  EXPECT_EQ(std::filesystem::exists(fake_.folder / "data/reserved-room"), reserves);
}

INSTANTIATE_TEST_SUITE_P(Actions, RequestTest,
                         testing::Values(std::pair(Action::kPause, true),
                                         std::pair(Action::kRemove, false),
                                         std::pair(Action::kClear, false),
                                         std::pair(Action::kClean, false)));

}  // namespace
}  // namespace playerx::cli
