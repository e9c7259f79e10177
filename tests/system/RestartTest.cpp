#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <memory>

#include "tests/support/Nginx.h"
#include "tests/support/ScriptedServer.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace system_test {
namespace {

using support::Nginx;
using support::Process;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uint64_t kRestartSize = 6'000'000;

class RestartTest : public testing::Test {
 protected:
  Nginx server{{.limitRate = "1m"}};
  PlayerHome home;
  std::string url = offer();

  std::string offer() {
    writeDistinctFile(server.root() / "film.avi", kRestartSize);
    return server.url("/film.avi");
  }

  /// A player that has a part of the film.
  std::unique_ptr<Process> startHalfWay() {
    auto player = std::make_unique<Process>(home.startOptions({"get", url}));
    EXPECT_TRUE(player->waitForOutput("\"percent\":1")) << player->errors();
    return player;
  }

  void expectWholeAfterNextGet() {
    const PlayerResult result = home.run({"get"});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    EXPECT_TRUE(sameContent(server.root() / "film.avi", home.media() / "film.avi"));
    EXPECT_EQ(home.films().size(), 1u);
    EXPECT_THAT(home.partials(), IsEmpty());
  }
};

TEST_F(RestartTest, CtrlCParksTheQueueThatTheNextGetGoesOnWith) {
  const std::unique_ptr<Process> player = startHalfWay();
  player->send(SIGINT);
  EXPECT_EQ(player->wait(), 130);
  ASSERT_EQ(home.queue().size(), 1u);
  EXPECT_EQ(home.queue()[0]["status"], "paused");
  expectWholeAfterNextGet();
  EXPECT_THAT(server.accessLog(), HasSubstr(" 206 "));
}

TEST_F(RestartTest, NamingTheFilmAgainGoesOnWithIt) {
  const std::unique_ptr<Process> player = startHalfWay();
  player->send(SIGINT);
  EXPECT_EQ(player->wait(), 130);
  const PlayerResult again = home.run({"get", url});
  EXPECT_EQ(again.status, 0) << again.output << again.errors;
  EXPECT_THAT(again.errors, HasSubstr("is in the queue already"));
  EXPECT_TRUE(sameContent(server.root() / "film.avi", home.media() / "film.avi"));
  EXPECT_EQ(home.films().size(), 1u);
  EXPECT_EQ(home.queue().size(), 1u);
}

TEST_F(RestartTest, TheSpeedIsMeasuredHoweverFastPercentsCome) {
  const PlayerResult result = home.run({"get", url});
  EXPECT_EQ(result.status, 0) << result.output << result.errors;
  const std::vector<Json> changes = result.events("changed");
  EXPECT_TRUE(std::any_of(changes.begin(), changes.end(),
                          [](const Json& change) { return change["bytesPerSecond"] > 100'000; }));
}

TEST_F(RestartTest, AKilledPlayerGoesOnFromTheBytesAlreadyThere) {
  const std::unique_ptr<Process> player = startHalfWay();
  player->send(SIGKILL);
  EXPECT_EQ(player->wait(), 128 + SIGKILL);
  expectWholeAfterNextGet();
  EXPECT_THAT(server.accessLog(), HasSubstr(" 206 "));
}

TEST_F(RestartTest, AFilmThatChangedMeanwhileIsFetchedAnew) {
  const std::unique_ptr<Process> player = startHalfWay();
  player->send(SIGKILL);
  player->wait();
  writeDistinctFile(server.root() / "film.avi", kRestartSize, 99);
  std::filesystem::last_write_time(
      server.root() / "film.avi",
      std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
  expectWholeAfterNextGet();
}

TEST_F(RestartTest, AServerThatGoesAwayForAMomentIsWaitedFor) {
  const std::unique_ptr<Process> player = startHalfWay();
  server.stop();
  server.start();
  const PlayerResult result = finish(*player);
  EXPECT_EQ(result.status, 0) << result.output << result.errors;
  EXPECT_TRUE(sameContent(server.root() / "film.avi", home.media() / "film.avi"));
}

TEST_F(RestartTest, AListBesideARunningPlayerLeavesTheQueueAlone) {
  const std::unique_ptr<Process> player = startHalfWay();
  ASSERT_EQ(home.queue().size(), 1u);
  EXPECT_EQ(home.queue()[0]["status"], "downloading");
  EXPECT_TRUE(player->running());
  player->send(SIGTERM);
  EXPECT_EQ(player->wait(), 130);
}

TEST_F(RestartTest, KillingOverAndOverLosesNothing) {
  for (int round = 0; round < 4; ++round) {
    Process player = home.start(round == 0 ? std::vector<std::string>{"get", url}
                                           : std::vector<std::string>{"get"});
    ASSERT_TRUE(player.waitForOutput("downloading")) << player.errors();
    player.send(SIGKILL);
    player.wait();
    ASSERT_EQ(home.queue().size(), 1u) << "round " << round;
  }
  expectWholeAfterNextGet();
}

TEST_F(RestartTest, AStalledServerDoesNotHoldCtrlCUp) {
  support::ScriptedServer stalled;
  stalled.always(support::Script().readRequest().stall());
  Process player = home.start({"get", stalled.url("/a.avi")});
  ASSERT_TRUE(player.waitForOutput("\"added\""));
  player.send(SIGINT);
  EXPECT_EQ(player.wait(std::chrono::seconds(10)), 130);
}

}  // namespace
}  // namespace system_test
