#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/soak/Count.h"
#include "tests/support/Nginx.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace soak {
namespace {

using std::chrono::microseconds;
using std::chrono::steady_clock;
using system_test::Json;
using system_test::PlayerHome;

/// A command that downloads three films, killed, and given again.
class PlayerKill : public testing::Test {
 protected:
  explicit PlayerKill(const std::string& rate = {}) : server_(limitedTo(rate)) {
    for (const char* const name : {"one.avi", "two.mkv", "three.avi"}) {
      system_test::writeDistinctFile(server_.root() / name, 400'000, names_.size() + 1);
      names_.push_back(name);
      command_.push_back(server_.url(std::string("/") + name));
    }
  }

  static support::NginxOptions limitedTo(const std::string& rate) {
    support::NginxOptions options;
    if (!rate.empty()) options.serverSnippet = "    limit_rate " + rate + ";\n";
    return options;
  }

  /// What the command needs from its start until the last film is announced.
  microseconds measure() const {
    const PlayerHome home;
    const auto start = steady_clock::now();
    EXPECT_EQ(home.run(command_).status, 0);
    return std::chrono::duration_cast<microseconds>(steady_clock::now() - start);
  }

  /// Kills the command after this time; it may have ended before.
  void kill(const PlayerHome& home, microseconds after) const {
    support::Process player = home.start(command_);
    std::this_thread::sleep_for(after);
    player.send(SIGKILL);
    player.wait();
  }

  /// Kills the command up to 3 ms after one of the films, any, has got its name.
  void killAroundCompletion(const PlayerHome& home) {
    support::Process player = home.start(command_);
    const std::size_t film = random_() % names_.size();
    const auto hasCome = [&] { return std::filesystem::exists(home.media() / names_[film]); };
    while (!hasCome() && player.running()) std::this_thread::yield();
    std::this_thread::sleep_for(between(microseconds(0), microseconds(3'000)));
    player.send(SIGKILL);
    player.wait();
  }

  microseconds between(microseconds least, microseconds most) {
    return microseconds(std::uniform_int_distribution(least.count(), most.count())(random_));
  }

  void expectEachFilmOnce(const PlayerHome& home) const {
    const auto result = home.run(command_);
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    EXPECT_THAT(home.films(), testing::UnorderedElementsAreArray(names_));
    EXPECT_THAT(home.partials(), testing::IsEmpty());
    for (const std::string& name : names_) {
      EXPECT_TRUE(system_test::sameContent(server_.root() / name, home.media() / name)) << name;
    }
    const std::vector<Json> queue = home.queue();
    EXPECT_EQ(queue.size(), names_.size());
    for (const Json& item : queue) EXPECT_EQ(item["status"], "completed") << item;
  }

  const support::Nginx server_;
  std::vector<std::string> names_;
  std::vector<std::string> command_ = {"get"};
  std::mt19937 random_{std::random_device{}()};
};

/// Films that arrive within about a second each.
class SlowPlayerKill : public PlayerKill {
 protected:
  SlowPlayerKill() : PlayerKill("2000k") {}
};

TEST_F(SlowPlayerKill, InMidTransferLeavesEachFilmOnceAfterTheSameCommand) {
  const microseconds whole = measure();
  for (int kills = 0; kills < countOr(6) && !HasFailure(); ++kills) {
    SCOPED_TRACE(kills);
    const PlayerHome home;
    kill(home, between(microseconds(0), whole));
    if (random_() % 2 == 0) kill(home, between(microseconds(0), whole));
    expectEachFilmOnce(home);
  }
}

TEST_F(PlayerKill, AroundTheCompletionLeavesEachFilmOnceAfterTheSameCommand) {
  for (int kills = 0; kills < countOr(6) && !HasFailure(); ++kills) {
    SCOPED_TRACE(kills);
    const PlayerHome home;
    killAroundCompletion(home);
    expectEachFilmOnce(home);
  }
}

TEST_F(PlayerKill, AroundTheCompletionOnAnotherFileSystemLeavesEachFilmOnceAfterTheSameCommand) {
  for (int kills = 0; kills < countOr(6) && !HasFailure(); ++kills) {
    SCOPED_TRACE(kills);
    PlayerHome home;
    // In memory, other than the home.
    home.setMedia(std::filesystem::path("/dev/shm") / home.data().parent_path().filename());
    killAroundCompletion(home);
    expectEachFilmOnce(home);
    std::filesystem::remove_all(home.media());
  }
}

}  // namespace
}  // namespace soak
