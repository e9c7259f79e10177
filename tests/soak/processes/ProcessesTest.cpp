#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <map>
#include <mutex>
#include <random>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/soak/Count.h"
#include "tests/support/Nginx.h"
#include "tests/support/TempDir.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace soak {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using system_test::Json;
using system_test::PlayerHome;
using system_test::PlayerResult;
using Names = std::set<std::string>;
using Words = std::vector<std::string>;

constexpr int kUsers = 20;
constexpr int kKilled = 128 + SIGKILL;
constexpr int kInterrupted = 130;

/// What the players have told their users, by the names of the films.
class Told {
 public:
  /// How the command ended that was to add this film.
  void add(const std::string& film, int status) {
    const std::lock_guard lock(mutex_);
    if (status == 0) added_.insert(film);
    if (status != kKilled && status != kInterrupted) answered_.insert(film);
  }

  /// The films whose command has answered.
  Names answered() {
    const std::lock_guard lock(mutex_);
    return answered_;
  }

  /// Out of the sentence on a removal, and what had answered when that was asked for. A film that
  /// has not been acknowledged yet may come back: a command whose player is killed before it
  /// answers asks the next one once more.
  void remove(const PlayerResult& result, const Names& answered) {
    static const std::regex name(R"(film-\d+-\d+\.avi)");
    std::smatch found;
    const std::lock_guard lock(mutex_);
    if (result.status == 0 && std::regex_search(result.output, found, name)) {
      const std::string film = found.str();
      const bool isNew = (answered.contains(film) ? removed_ : unsure_).insert(film).second;
      EXPECT_TRUE(isNew || unsure_.contains(film)) << result.output << " once more";
    } else if (result.errors.find("ended before it answered") != std::string::npos) {
      ++unanswered_;
    }
  }

  /// Whether these are the films of the queue: each that was added and not removed is among them
  /// once. An unanswered removal may have been carried out.
  void expectIn(const std::vector<std::string>& queue) const {
    const Names found(queue.begin(), queue.end());
    EXPECT_EQ(found.size(), queue.size()) << "one is there twice";
    Names lost;
    for (const std::string& film : added_) {
      const bool mayBeGone = removed_.contains(film) || unsure_.contains(film);
      if (!mayBeGone && !found.contains(film)) lost.insert(film);
    }
    EXPECT_LE(lost.size(), unanswered_) << testing::PrintToString(lost);
    for (const std::string& film : removed_) EXPECT_FALSE(found.contains(film)) << film;
  }

  void print() const {
    std::cout << added_.size() << " films added, " << removed_.size() << " removed, "
              << unsure_.size() << " more before they were acknowledged, " << unanswered_
              << " removals unanswered" << std::endl;
  }

 private:
  std::mutex mutex_;
  Names added_, answered_;
  Names removed_, unsure_;  ///< after and before their command had answered
  std::size_t unanswered_ = 0;
};

/// One of those who use the queue at the same time, each with one command after the other.
class User {
 public:
  User(int number, const PlayerHome& home, const support::Nginx& server, Told& told)
      : number_(number), home_(home), server_(server), told_(told) {}

  void giveCommand() {
    const auto kind = random_() % 10;
    if (kind < 3) return add("add", mayKill());
    if (kind < 5) return add("get", random_() % 2 == 0 ? SIGKILL : SIGINT);
    if (kind < 6) return remove();
    const std::vector<Words> others = {{"list"},
                                       {"move", position(), anyOf({"up", "down", "top", "bottom"})},
                                       {"pause", position()},
                                       {"resume"}};
    give(others[kind - 6], mayKill());
  }

 private:
  int mayKill() { return random_() % 4 == 0 ? SIGKILL : 0; }
  std::string position() { return std::to_string(1 + random_() % 8); }
  std::string anyOf(const Words& words) { return words[random_() % words.size()]; }

  void remove() {
    const Names answered = told_.answered();
    told_.remove(give({"remove", position(), "--with-film"}, 0), answered);
  }

  void add(const std::string& command, int signal) {
    const std::string film =
        "film-" + std::to_string(number_) + "-" + std::to_string(++films_) + ".avi";
    const PlayerResult result = give({command, server_.url("/" + film)}, signal);
    told_.add(film, result.status);
  }

  /// Gives a command, which gets this signal, if any, at some moment.
  PlayerResult give(const Words& words, int signal) {
    support::Process player(
        {.arguments = home_.commandLine(words), .environment = home_.environment()});
    if (signal != 0) {
      player.wait(milliseconds(random_() % (words.front() == "get" ? 600 : 150)));
      player.send(signal);
    }
    const PlayerResult result = system_test::finish(player);
    expectAnswer(words, result);
    return result;
  }

  /// What does not succeed is said.
  static void expectAnswer(const Words& words, const PlayerResult& result) {
    if (result.status == 0 || result.status == kKilled || result.status == kInterrupted) return;
    EXPECT_THAT(result.status, testing::AnyOf(1, 2)) << testing::PrintToString(words);
    EXPECT_NE(result.errors, "") << testing::PrintToString(words) << result.status;
  }

  const int number_;
  const PlayerHome& home_;
  const support::Nginx& server_;
  Told& told_;
  int films_ = 0;
  std::mt19937 random_{std::random_device{}()};
};

class Processes : public testing::Test {
 protected:
  Processes() { server_.serve("film.avi", film_); }

  void giveCommands(int count) {
    std::atomic<int> left = count;
    std::vector<std::jthread> users;
    for (int number = 0; number < kUsers; ++number) {
      users.emplace_back([this, number, &left] {
        User user(number, home_, server_, told_);
        while (left-- > 0) user.giveCommand();
      });
    }
  }

  std::vector<std::string> titles() const {
    std::vector<std::string> list;
    for (const Json& item : home_.queue()) list.push_back(item["title"]);
    return list;
  }

  /// Fetches what is left, the items too that were told to wait.
  void finishQueue() const {
    const std::vector<Json> queue = home_.queue();
    for (std::size_t i = 0; i < queue.size(); ++i) {
      if (queue[i]["status"] == "stopped") home_.run({"resume", std::to_string(i + 1)});
    }
    const PlayerResult result = home_.run({"get"});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
  }

  /// Under any name: a film that comes just when it is paused is numbered when it goes on.
  void expectEachFilmOnce() const {
    std::vector<std::string> files = home_.films();
    for (const Json& item : home_.queue()) {
      const fs::path film = item["path"].get<std::string>();
      EXPECT_EQ(std::erase(files, film.filename()), 1U) << item;
      EXPECT_TRUE(fs::exists(film) && support::readFile(film) == film_) << item;
    }
    for (const std::string& name : files) expectOfRemoved(name);
  }

  /// A film that came just before its player was killed is not yet known as that of its item, so it
  /// stays when that is removed.
  void expectOfRemoved(const std::string& name) const {
    const std::string film = std::regex_replace(name, std::regex(R"(\[\d+\])"), "");
    EXPECT_THAT(titles(), testing::Not(testing::Contains(film))) << name;
  }

  void expectNothingLeft() const {
    EXPECT_THAT(home_.partials(), testing::IsEmpty());
    EXPECT_THAT(support::hiddenFilesIn(home_.data()), testing::IsEmpty());
  }

  const std::string film_ = system_test::distinctBytes(60'000);
  const support::Nginx server_{
      {.limitRate = "600k", .serverSnippet = "    rewrite ^ /film.avi break;\n"}};
  PlayerHome home_;
  Told told_;
};

TEST_F(Processes, OfManyUsersLoseNothingThatWasAcknowledged) {
  giveCommands(countOr(200));
  told_.print();
  told_.expectIn(titles());
  finishQueue();
  told_.expectIn(titles());
  expectEachFilmOnce();
  expectNothingLeft();
}

}  // namespace
}  // namespace soak
