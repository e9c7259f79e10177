#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "tests/soak/Count.h"
#include "tests/soak/calls/FailingPlayer.h"
#include "tests/support/LegacyQueueFile.h"
#include "tests/support/Nginx.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace soak {
namespace {

namespace fs = std::filesystem;
using system_test::Json;
using system_test::PlayerHome;
using system_test::PlayerResult;
using testing::IsSubsetOf;
using testing::IsSupersetOf;
using Titles = std::vector<std::string>;

void writeQueue(const PlayerHome& home) {
  fs::create_directories(home.data());
  support::writeFile(home.queueFile(),
                     "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue>"
                     "<DownloadItem title=\"old one\" status=\"4\" url=\"http://h/1.avi\"/>"
                     "<DownloadItem title=\"old two\" status=\"4\" url=\"http://h/2.avi\"/>"
                     "</DownloadQueue>\n");
}

void writeLegacyQueue(const PlayerHome& home) {
  support::LegacyQueueFile queue;
  queue.item().text("title", L"old one").text("url", L"http://h/1.avi").attribute("status", "4");
  queue.item().text("title", L"old two").text("url", L"http://h/2.avi").attribute("status", "4");
  fs::create_directories(home.data());
  support::writeFile(home.data() / "DownloadQueue.dlq", queue.document());
}

/// One command on a queue that is there already.
struct Situation {
  std::string name;
  std::function<void(const PlayerHome&)> prepare;
  std::string command;
  std::function<std::string(const PlayerHome&)> input;  ///< of the command; empty for none
  Titles adds;                                          ///< to the old ones

  std::vector<std::string> commandFor(const PlayerHome& home) const {
    const std::string given = input(home);
    return given.empty() ? std::vector{command} : std::vector{command, given};
  }
};

class FailingCalls : public testing::Test {
 protected:
  FailingCalls() {
    system_test::writeDistinctFile(server_.root() / "new.avi", 300'000);
    url_ = server_.url("/new.avi");
  }

  /// A ticket for the new film, where calls fail.
  std::string writeTicket(const PlayerHome& home) const {
    const fs::path file = home.data().parent_path() / "film.tix";
    support::writeFile(file, "TixVeskVersion=1.0\nstart\nurl=" + url_ + "\nend\n");
    return file;
  }

  std::function<std::string(const PlayerHome&)> address() const {
    return [this](const PlayerHome&) { return url_; };
  }

  static Titles titles(const std::vector<Json>& queue) {
    Titles titles;
    for (const Json& item : queue) titles.push_back(item["title"]);
    std::sort(titles.begin(), titles.end());
    return titles;
  }

  static void expectSaid(const PlayerResult& result) {
    const auto refused = result.events("refused");
    EXPECT_THAT(result.status, testing::AnyOf(1, refused.empty() ? 1 : 2))
        << result.output << result.errors;
    const bool isSaid = !result.errors.empty() || !result.events("failed").empty();
    EXPECT_TRUE(isSaid || !refused.empty()) << result.output;
    for (const Json& each : refused) EXPECT_EQ(each["reason"]["code"], "bad_ticket") << each;
  }

  /// The film is where the queue says. Where the queue could not keep that it had come, it came
  /// twice.
  void expectFilm(const PlayerHome& home) const {
    for (const Json& item : home.queue()) {
      if (item["title"] != "new.avi") continue;
      EXPECT_EQ(item["status"], "completed");
      const fs::path film = item["path"].get<std::string>();
      EXPECT_TRUE(system_test::sameContent(server_.root() / "new.avi", film)) << film;
    }
    EXPECT_THAT(home.partials(), testing::IsEmpty());
  }

  /// What succeeded is true; what failed was said, has changed nothing else, and works the next
  /// time.
  void expectNothingLost(const Situation& situation, const PlayerHome& home,
                         const PlayerResult& result) const {
    const bool downloads = situation.command == "get";
    Titles whole = kOld;
    whole.insert(whole.begin(), situation.adds.begin(), situation.adds.end());
    if (result.status != 0) expectSaid(result);
    const Titles found = titles(home.queue());
    EXPECT_THAT(found, IsSubsetOf(whole));
    EXPECT_THAT(found, IsSupersetOf(result.status == 0 ? whole : kOld));
    if (result.status == 0 && downloads) {
      expectFilm(home);
      EXPECT_EQ(home.films(), Titles{"new.avi"});
    }
    if (downloads || found != whole) {
      const PlayerResult again = home.run(situation.commandFor(home));
      EXPECT_EQ(again.status, 0) << again.output << again.errors;
    }
    EXPECT_EQ(titles(home.queue()), whole);
    if (downloads) expectFilm(home);
  }

  /// Tries any of the failures, or all of them where they are fewer.
  void tryFailures(const Situation& situation) {
    const PlayerHome whole;
    situation.prepare(whole);
    std::vector<Failure> failures =
        failuresOf(runFailing(whole, situation.commandFor(whole)).calls);
    std::shuffle(failures.begin(), failures.end(), random_);
    failures.resize(std::min<std::size_t>(failures.size(), countOr(12)));
    for (const Failure& failure : failures) tryOne(situation, failure);
    std::cout << situation.name << ": " << failures.size() << " failures; ended with";
    for (const auto& [status, count] : ends_) std::cout << ' ' << status << ": " << count << "x";
    std::cout << std::endl;
  }

  void tryOne(const Situation& situation, const Failure& failure) {
    SCOPED_TRACE(situation.name + ", " + failure.text());
    const PlayerHome home;
    situation.prepare(home);
    const FailingRun run = runFailing(home, situation.commandFor(home), failure);
    if (!run.hasFailed) return;  // no other run makes exactly the same calls
    ++ends_[run.result.status];
    expectNothingLost(situation, home, run.result);
  }

  const Titles kOld = {"old one", "old two"};
  const support::Nginx server_;
  std::string url_;
  std::map<int, int> ends_;
  std::mt19937 random_{std::random_device{}()};
};

TEST_F(FailingCalls, WhileAQueueIsLoadedLoseNothing) {
  tryFailures({"load", writeQueue, "list", [](const PlayerHome&) { return ""; }, {}});
}

TEST_F(FailingCalls, WhileAnEarlierQueueIsImportedLoseNothing) {
  tryFailures({"import", writeLegacyQueue, "add", address(), {"new.avi"}});
}

TEST_F(FailingCalls, WhileAFilmIsAddedLoseNothing) {
  tryFailures({"save", writeQueue, "add", address(), {"new.avi"}});
}

TEST_F(FailingCalls, WhileATicketIsAddedLoseNothing) {
  const auto ticket = [this](const PlayerHome& home) { return writeTicket(home); };
  tryFailures({"ticket", writeQueue, "add", ticket, {"new.avi"}});
}

TEST_F(FailingCalls, WhileAFilmIsDownloadedLoseNothing) {
  tryFailures({"download", writeQueue, "get", address(), {"new.avi"}});
}

}  // namespace
}  // namespace soak
