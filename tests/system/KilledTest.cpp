#include <gmock/gmock.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "tests/support/Nginx.h"
#include "tests/system/BigFile.h"
#include "tests/system/DemoServer.h"
#include "tests/system/PlayerHome.h"
#include "tests/system/TracedPlayer.h"

namespace system_test {
namespace {

// What has come of such a film is kept from the start.
constexpr std::uint64_t kKilledSize = 6'000'000;

/// What a system call does, whatever the names of the moment: "rename .json", "fdatasync".
std::string kindOf(const std::string& call) {
  const std::string name = call.substr(0, call.find(' '));
  const std::size_t slash = call.rfind('/');
  if (slash == std::string::npos) return name;
  const std::filesystem::path target = call.substr(slash + 1);
  const bool isOfPartial = call.find("/partial/") != std::string::npos;
  const bool staysThere = call.rfind("/partial/") + std::string("/partial").size() == slash;
  const bool isHidden = target.native().starts_with('.');
  return name + " " +
         ((isOfPartial && staysThere) || isHidden ? target.extension() : target).string();
}

bool hasWholeFile(const std::filesystem::path& folder, const std::vector<std::string>& names) {
  return std::any_of(names.begin(), names.end(), [&folder](const std::string& name) {
    std::error_code gone;
    return std::filesystem::file_size(folder / name, gone) == kKilledSize && !gone;
  });
}

/// A player killed at every instant, one after the other, that may matter once the last byte is on
/// the disk: before each system call that brings a file to the disk or changes its name. An instant
/// is known by where the film is, what the call does, and how often it was done before: the order
/// of what different threads do changes from run to run.
class KilledTest : public testing::Test {
 protected:
  std::set<std::string> instants;

  /// Runs the command and kills it at the first instant that is not among those seen. False when
  /// all have been seen: the player has come to its end.
  bool killAtNewInstant(const PlayerHome& home, const std::vector<std::string>& arguments) {
    TracedPlayer player(home.startOptions(arguments));
    std::map<std::string, int> counts;
    std::string latest;
    const auto isNew = [&](const std::string& call) {
      const bool isPlaced = hasWholeFile(home.media(), home.films());
      if (!isPlaced && !hasWholeFile(home.data() / "partial", home.partials())) return false;
      latest = (isPlaced ? "placed: " : "arrived: ") + kindOf(call);
      latest += " #" + std::to_string(++counts[latest]);
      return instants.insert(latest).second;
    };
    const bool isKilled = player.run(isNew).has_value();
    if (isKilled) {
      std::cout << "killed at " << latest << std::endl;
    } else {
      EXPECT_EQ(player.process().wait(), 0) << player.process().errors();
    }
    return isKilled;
  }

  /// Before the film moves; after that and before the queue file says so.
  void expectThatNothingWasLeftOut(const std::string& film) const {
    using testing::IsSupersetOf;
    const std::vector<std::string> wanted = {"arrived: renameat2 " + film + " #1",
                                             "placed: renameat2 downloadmanager.xml #1"};
    EXPECT_THAT(instants, IsSupersetOf(wanted));
  }
};

/// What the server was asked for: the statuses and the bytes of its answers to GET.
struct Served {
  int whole = 0;            ///< times that the film was sent from its first byte on
  std::uint64_t bytes = 0;  ///< of all bodies
};

Served servedBy(const support::Nginx& server) {
  std::istringstream lines(server.accessLog());
  Served served;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string method, target, status;
    std::uint64_t bytes = 0;
    words >> method >> target >> status >> bytes;
    if (method != "GET") continue;
    if (status == "200") ++served.whole;
    served.bytes += bytes;
  }
  return served;
}

/// The only item of the queue is complete, and its file the only one, under this name and with
/// these beside it.
void expectOnlyFilm(const PlayerHome& home, const std::filesystem::path& original,
                    const std::string& name, const std::vector<std::string>& besides) {
  const std::vector<Json> queue = home.queue();
  ASSERT_EQ(queue.size(), 1u);
  EXPECT_EQ(queue[0]["status"], "completed");
  const std::filesystem::path film = queue[0]["path"].get<std::string>();
  EXPECT_TRUE(sameContent(original, film)) << film;
  EXPECT_EQ(film.filename(), name);
  std::vector<std::string> names = {name};
  for (const std::string& suffix : besides) names.push_back(name + suffix);
  EXPECT_EQ(home.films(), names);
  EXPECT_THAT(home.partials(), testing::IsEmpty());
}

TEST_F(KilledTest, AFilmWhoseLastByteHasComeIsNotFetchedAgain) {
  // Until it is on record that the film is whole, the last stretch is compared with the server's.
  constexpr std::uint64_t kOverlap = 65'536;
  for (bool isKilled = true; isKilled;) {
    const support::Nginx server;
    const PlayerHome home;
    writeDistinctFile(server.root() / "film.avi", kKilledSize);
    isKilled = killAtNewInstant(home, {"get", server.url("/film.avi")});
    const PlayerResult result = home.run({"get"});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    expectOnlyFilm(home, server.root() / "film.avi", "film.avi", {});
    EXPECT_EQ(servedBy(server).whole, 1) << server.accessLog();
    EXPECT_LE(servedBy(server).bytes, kKilledSize + kOverlap) << server.accessLog();
    if (HasFailure()) return;
  }
  expectThatNothingWasLeftOut("film.avi");
}

/// Gives the queue back what it held before it knew where its film goes.
void forgetPaths(const std::filesystem::path& queueFile) {
  const std::regex path("filePath=\"[^\"]*\"");
  const std::string forgotten = "filePath=\"\"";
  support::writeFile(queueFile, std::regex_replace(support::readFile(queueFile), path, forgotten));
}

/// Kills the player when its film has its name and the queue does not know yet, then has the queue
/// forget where the film goes. False when the kill came too late: one thread alone halts for it.
bool expectItsNameAllTheSame(bool isQueueLost) {
  const support::Nginx server;
  const PlayerHome home;
  writeDistinctFile(server.root() / "film.avi", kKilledSize);
  const std::string url = server.url("/film.avi");
  TracedPlayer player(home.startOptions({"get", url}));
  EXPECT_TRUE(
      player.run([&home](const std::string&) { return hasWholeFile(home.media(), home.films()); }));
  const bool isLate = support::readFile(home.queueFile()).find("status=\"4\"") != std::string::npos;
  if (isLate) return false;
  isQueueLost ? void(std::filesystem::remove(home.queueFile())) : forgetPaths(home.queueFile());
  const PlayerResult result = home.run({"get", url});
  EXPECT_EQ(result.status, 0) << result.output << result.errors;
  expectOnlyFilm(home, server.root() / "film.avi", "film.avi", {});
  EXPECT_EQ(servedBy(server).whole, 1) << server.accessLog();
  return true;
}

TEST_F(KilledTest, AFilmThatTheQueueHasForgottenGetsItsNameAllTheSame) {
  for (const bool isQueueLost : {false, true}) {
    bool isInTime = false;
    for (int i = 0; i < 20 && !isInTime; ++i) isInTime = expectItsNameAllTheSame(isQueueLost);
    EXPECT_TRUE(isInTime);
  }
}

TEST_F(KilledTest, AProtectedFilmWhoseLastByteHasComeIsThereOnceWithItsRights) {
  DemoServer server(kKilledSize);
  for (bool isKilled = true; isKilled;) {
    PlayerHome home;
    server.introduceTo(home);
    isKilled = killAtNewInstant(home, {"get", server.ticket()});
    const PlayerResult result = home.run({"get"});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    expectOnlyFilm(home, server.film(), "film.vesk", {".rights"});
    if (HasFailure()) return;
  }
  expectThatNothingWasLeftOut("film.vesk");
}

}  // namespace
}  // namespace system_test
