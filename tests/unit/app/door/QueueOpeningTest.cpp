#include <gmock/gmock.h>

#include "playerx/app/door/DoorPath.h"
#include "playerx/app/door/DoorServer.h"
#include "playerx/app/door/QueueOpening.h"
#include "playerx/settings/PreferenceOverrides.h"
#include "tests/unit/app/FakeSession.h"

namespace playerx::door {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using Where = OpenedQueue::Where;

/// A session that is not open yet.
class QueueOpeningTest : public testing::Test {
 protected:
  QueueOpeningTest() {
    needApplication();
    session::SessionOptions options;
    options.dataFolder = folder_ / "data";
    options.mediaFolder = folder_ / "films";
    options.pluginFolder = folder_.path();
    session_.emplace(options,
                     session::SessionListener{[] {}, [](const std::string&) { return -1; }});
    module_.offerTo(*session_);
  }

  ~QueueOpeningTest() override {
    session_.reset();
    clearPreferenceOverrides();
  }

  OpenedQueue open(
      std::chrono::milliseconds longest, const std::function<bool()>& rest = [] { return true; }) {
    return openQueue(*session_, session::PlayerSession::Access::kChange, longest,
                     [&rest](std::chrono::milliseconds) { return rest(); });
  }

  support::TempDir folder_;
  support::EventLog log_;
  FakeModule module_{log_};
  std::optional<session::PlayerSession> session_;
};

TEST_F(QueueOpeningTest, AQueueThatNobodyHasIsOpenedHere) {
  EXPECT_EQ(open(0ms).where, Where::kHere);
}

TEST_F(QueueOpeningTest, AQueueThatIsServedIsFoundThere) {
  const session::DataFolderLock lock(folder_ / "data");
  DoorServer server(write(Greeting{}), "", [] {});
  ASSERT_EQ(server.listen(doorPath(folder_ / "data")), "");
  EXPECT_EQ(open(0ms).where, Where::kThere);
}

TEST_F(QueueOpeningTest, AQueueThatIsHeldForAMomentIsWaitedFor) {
  std::optional<session::DataFolderLock> lock(std::in_place, folder_ / "data");
  const OpenedQueue opened = open(1h, [&lock] {
    lock.reset();
    return true;
  });
  EXPECT_EQ(opened.where, Where::kHere);
}

TEST_F(QueueOpeningTest, AQueueThatIsHeldForLongIsSaid) {
  const session::DataFolderLock lock(folder_ / "data");
  const OpenedQueue opened = open(0ms);
  EXPECT_EQ(opened.where, Where::kNowhere);
  EXPECT_THAT(opened.problem, HasSubstr("Another player"));
}

TEST_F(QueueOpeningTest, AUserThatGivesUpIsHeeded) {
  const session::DataFolderLock lock(folder_ / "data");
  const OpenedQueue opened = open(1h, [] { return false; });
  EXPECT_EQ(opened.where, Where::kNowhere);
  EXPECT_EQ(opened.problem, "");
}

TEST_F(QueueOpeningTest, APlayerThatIsBusyIsAskedAgainThenSaid) {
  const session::DataFolderLock lock(folder_ / "data");
  std::optional<DoorServer> server(std::in_place, write(Greeting{.isBusy = true}), "", [] {});
  ASSERT_EQ(server->listen(doorPath(folder_ / "data")), "");
  EXPECT_THAT(open(0ms).problem, HasSubstr("as many others as it can"));
  const OpenedQueue opened = open(1h, [&] {
    server.reset();
    server.emplace(write(Greeting{}), "", [] {});
    return server->listen(doorPath(folder_ / "data")).empty();
  });
  EXPECT_EQ(opened.where, Where::kThere);
}

TEST_F(QueueOpeningTest, APlayerOfAnotherVersionIsNotWaitedFor) {
  const session::DataFolderLock lock(folder_ / "data");
  DoorServer server(write(Greeting{.protocol = 2, .version = "9.9"}), "", [] {});
  ASSERT_EQ(server.listen(doorPath(folder_ / "data")), "");
  EXPECT_THAT(open(1h).problem, HasSubstr("another version"));
}

}  // namespace
}  // namespace playerx::door
