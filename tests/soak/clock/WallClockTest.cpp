#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/soak/Count.h"
#include "tests/support/Nginx.h"
#include "tests/support/ScriptedServer.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace soak {
namespace {

using support::Script;
using system_test::Json;
using system_test::PlayerHome;
using system_test::PlayerResult;

constexpr std::int64_t kDay = 24 * 60 * 60;
constexpr std::uint64_t kSize = 5 << 20;  ///< takes four seconds

/// Seconds; the server sends in bursts, so the first estimates are rough.
constexpr std::uint64_t kLongestEstimate = 300;

/// A player whose wall clock is set in the midst of its work.
class WallClock : public testing::Test {
 protected:
  WallClock() {
    setClock(0);
    home_.setEnvironment("LD_PRELOAD", SHIFTED_CLOCK);
    home_.setEnvironment("ASAN_OPTIONS", "verify_asan_link_order=0");
    home_.setEnvironment("VESK_CLOCK_SHIFT", shift_);
  }

  /// Sets the player's clock so far from the machine's.
  void setClock(std::int64_t seconds) const {
    std::ofstream file(shift_, std::ios::binary | std::ios::in | std::ios::out | std::ios::ate);
    if (!file.is_open()) file.open(shift_, std::ios::binary);
    file.seekp(0);
    file.write(reinterpret_cast<const char*>(&seconds), sizeof seconds);
  }

  /// The latest percentage that the player has printed.
  static int percentOf(const support::Process& player) {
    static const std::string member = "\"percent\":";
    const std::string output = player.output();
    const std::size_t found = output.rfind(member);
    return found == std::string::npos ? 0 : std::stoi(output.substr(found + member.size()));
  }

  /// By a clock that was set meanwhile, hours would be left, or a negative time.
  static void expectSteady(const Json& changed) {
    EXPECT_EQ(changed["silentSeconds"], 0) << changed;
    if (changed["secondsRemaining"].is_null()) return;
    EXPECT_LT(changed["secondsRemaining"], kLongestEstimate) << changed;
    EXPECT_GT(changed["bytesPerSecond"], kSize / kLongestEstimate) << changed;
  }

  const support::TempDir folder_;
  const std::string shift_ = folder_ / "shift";
  PlayerHome home_;
};

TEST_F(WallClock, IsThatOfTheProgram) {
  setClock(kDay);
  support::ProcessOptions date{{"date", "+%s"}, home_.environment(), {}, {}, {}};
  support::Process process(date);
  ASSERT_EQ(process.wait(), 0) << process.errors();
  EXPECT_NEAR(std::stod(process.output()), static_cast<double>(std::time(nullptr) + kDay), 30);
}

TEST_F(WallClock, ThatIsSetDuringADownloadChangesNoWaitAndNoEstimate) {
  const support::Nginx server({.limitRate = "1m"});
  system_test::writeDistinctFile(server.root() / "film.avi", kSize);
  for (int i = 0; i < countOr(1) && !HasFailure(); ++i) {
    const std::string url = server.url("/film.avi?" + std::to_string(i));
    support::Process player = home_.start({"get", "--timeout", "3", "--tries", "1", url});
    for (const auto& [percent, seconds] : {std::pair(20, kDay), {50, -kDay}, {80, 0L}}) {
      ASSERT_TRUE(support::waitFor([&, wanted = percent] { return percentOf(player) >= wanted; }));
      setClock(seconds);
    }
    const PlayerResult result = system_test::finish(player);
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    const std::vector<Json> changes = result.events("changed");
    EXPECT_GT(changes.size(), 5U);
    for (const Json& changed : changes) {
      if (changed["status"] == "downloading") expectSteady(changed);
    }
  }
}

TEST_F(WallClock, ThatIsSetBeforeARetryChangesNoPause) {
  const std::string film = system_test::distinctBytes(20'000);
  for (const std::int64_t seconds : {kDay, -kDay}) {
    support::ScriptedServer server;
    std::atomic<int> asked = 0;
    server.onRequest([&](const std::string& request) {
      if (request.starts_with("HEAD ") || ++asked > 1)
        return Script().send(support::okResponse(film));
      setClock(seconds);
      return Script().send(support::okResponse(film).substr(0, 10'000));
    });
    const auto start = std::chrono::steady_clock::now();
    const PlayerResult result = home_.run({"get", "--again", server.url("/film.avi")});
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    EXPECT_GT(took.count(), 0.75) << "the pause";
    EXPECT_LT(took.count(), 10);
  }
}

}  // namespace
}  // namespace soak
