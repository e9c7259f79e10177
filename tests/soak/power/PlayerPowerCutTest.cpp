#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/soak/power/Clock.h"
#include "tests/soak/power/DiskRecord.h"
#include "tests/soak/power/FileRecord.h"
#include "tests/soak/power/MountedDisk.h"
#include "tests/soak/power/PowerCut.h"
#include "tests/support/Nginx.h"
#include "tests/support/TempDir.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace power_test {
namespace {

namespace fs = std::filesystem;
using system_test::Json;
using system_test::PlayerHome;

/// What a player has said of each film, by its address, and when it had.
class Statements {
 public:
  void read(const std::string& output) {
    const std::int64_t time = now();
    std::istringstream lines(output.substr(read_, output.rfind('\n') + 1 - read_));
    for (std::string line; std::getline(lines, line);) note(Json::parse(line), time);
    read_ = output.rfind('\n') + 1;
  }

  std::set<std::string> addedBefore(std::int64_t time) const { return before(added_, time); }
  std::set<std::string> finishedBefore(std::int64_t time) const { return before(finished_, time); }

 private:
  using Times = std::map<std::string, std::int64_t>;

  void note(const Json& event, std::int64_t time) {
    if (event["event"] == "added") added_.emplace(event["url"], time);
    if (event["event"] == "finished") finished_.emplace(event["url"], time);
  }

  static std::set<std::string> before(const Times& times, std::int64_t time) {
    std::set<std::string> urls;
    for (const auto& [url, said] : times) {
      if (said < time) urls.insert(url);
    }
    return urls;
  }

  std::size_t read_ = 0;
  Times added_;
  Times finished_;
};

/// A player whose folders lie on a disk of their own, and films that arrive slowly until the power
/// is cut.
class PlayerPowerCut : public testing::Test {
 protected:
  PlayerPowerCut() : server_(slowlyWhile("slow")) {
    home_.nameNoFolders();
    home_.addOptions({"--data", (mounted_ / "data").string()});
    home_.addOptions({"--media", (mounted_ / "films").string()});
    for (int number = 0; number < 12; ++number) {
      const std::string name = "/film" + std::to_string(number) + ".avi";
      const std::uint64_t size = number % 3 == 0 ? 70'000 * number + 20'000 : 10'000 + number;
      system_test::writeDistinctFile(server_.root() / name.substr(1), size, number);
      urls_.push_back(server_.url(name));
    }
  }

  static support::NginxOptions slowlyWhile(const std::string& marker) {
    support::NginxOptions options;
    options.serverSnippet = "    if (-f $document_root/" + marker + ") { set $limit_rate 250k; }\n";
    return options;
  }

  Statements download(const std::map<std::string, std::string>& environment) {
    server_.serve("slow", "");
    std::vector<std::string> words = {"get"};
    words.insert(words.end(), urls_.begin(), urls_.end());
    support::ProcessOptions options = home_.startOptions(words);
    options.environment.insert(kBeforeTheCut.begin(), kBeforeTheCut.end());
    options.environment.insert(environment.begin(), environment.end());
    support::Process player(options);
    Statements statements;
    const auto hasEnded = [&] {
      statements.read(player.output());
      return !player.running();
    };
    EXPECT_TRUE(support::waitFor(hasEnded));
    fs::remove(server_.root() / "slow");
    return statements;
  }

  bool isWhole(const Json& item) const {
    const fs::path original = server_.root() / fs::path(item["url"].get<std::string>()).filename();
    return system_test::sameContent(original, item["path"].get<std::string>());
  }

  void expectAllThere(const Statements& statements, std::int64_t cut) const {
    std::set<std::string> queued, completed;
    for (const Json& item : home_.queue()) {
      queued.insert(item["url"]);
      if (item["status"] != "completed") continue;
      completed.insert(item["url"]);
      EXPECT_TRUE(isWhole(item)) << item;
    }
    EXPECT_THAT(queued, testing::IsSupersetOf(statements.addedBefore(cut - kSecond)))
        << home_.run({"list"}).errors;
    EXPECT_THAT(completed, testing::IsSupersetOf(statements.finishedBefore(cut - kSecond)));
  }

  void expectThatAllGoOn() const {
    const auto result = home_.run({"get"});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    for (const Json& item : home_.queue()) {
      EXPECT_EQ(item["status"], "completed") << item;
      EXPECT_TRUE(isWhole(item)) << item;
    }
  }

  support::TempDir folder_;
  const fs::path mounted_ = folder_ / "mounted";
  const support::Nginx server_;
  PlayerHome home_;
  std::vector<std::string> urls_;
  std::mt19937 random_{std::random_device{}()};
};

TEST_F(PlayerPowerCut, OfADiskLosesNoItemAndNoFilm) {
  if (!mayMount()) return;
  const std::string empty = emptyDisk();
  RecordedDisk recorded(empty, mounted_);
  const Statements statements = download({});
  ASSERT_EQ(statements.finishedBefore(now()).size(), urls_.size());
  recorded.unmount();
  const DiskRecord record(recorded.record());
  for (int cut = 0; cut < cutsToTry() && !HasFailure(); ++cut) {
    const std::size_t entry = anyEntry(record.size(), random_);
    SCOPED_TRACE("cut after " + std::to_string(entry) + " of " + std::to_string(record.size()));
    std::string content = empty;
    record.cutAfter(entry, content, random_);
    const MountedDisk disk(diskOf(content), mounted_);
    expectAllThere(statements, record.timeOf(entry + 1));
    expectThatAllGoOn();
  }
}

TEST_F(PlayerPowerCut, OfFileOperationsLosesNoItemAndNoFilm) {
  if (!mayKeepAttributes(folder_.path())) return;
  fs::create_directories(mounted_);
  const Statements statements = download(recordingIn(folder_ / "record", mounted_));
  ASSERT_EQ(statements.finishedBefore(now()).size(), urls_.size());
  const FileRecord record(folder_ / "record");
  for (int cut = 0; cut < cutsToTry() && !HasFailure(); ++cut) {
    const std::size_t entry = anyEntry(record.size(), random_);
    SCOPED_TRACE("cut after " + std::to_string(entry) + " of " + std::to_string(record.size()));
    fs::remove_all(mounted_);
    record.cutAfter(entry, mounted_, random_);
    expectAllThere(statements, record.timeOf(entry + 1));
    expectThatAllGoOn();
  }
}

}  // namespace
}  // namespace power_test
