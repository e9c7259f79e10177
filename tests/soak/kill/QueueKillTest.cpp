#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "persistence/DownloadManagerPersistence.h"
#include "tests/soak/Count.h"
#include "tests/soak/kill/QueueState.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace soak {
namespace {

namespace fs = std::filesystem;

/// What a host has printed: the states that it acknowledged, and those that it saved in between.
struct Printed {
  explicit Printed(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line) && !lines.eof();) {
      if (line.starts_with('~')) {
        unacknowledged.push_back(line.substr(1));
      } else {
        acknowledged.push_back(line);
        if (acknowledged.size() > 1) beforeLast = std::exchange(unacknowledged, {});
      }
    }
  }

  std::vector<std::string> acknowledged;
  std::vector<std::string> unacknowledged;  ///< after the last acknowledged state
  std::vector<std::string> beforeLast;  ///< between the last acknowledged state and the one before
};

/// Runs of one host after the other on one data folder, each killed at some instant.
class QueueKill : public testing::Test {
 protected:
  QueueKill() {
    runHost(folder_.path(), 0, "100");
    fs::create_directory(folder_ / "replay");
  }

  support::Process host(const fs::path& data, unsigned int seed, const std::string& operations) {
    return support::Process({QUEUE_HOST, data, std::to_string(seed), operations});
  }

  Printed runHost(const fs::path& data, unsigned int seed, const std::string& operations) {
    support::Process process = host(data, seed, operations);
    EXPECT_EQ(process.wait(), 0) << process.errors();
    return Printed(process.output());
  }

  /// What a host printed before it was killed.
  Printed killHost(unsigned int seed) {
    support::Process process = host(folder_.path(), seed, "1000000");
    EXPECT_TRUE(process.waitForOutput("\n")) << process.errors();
    std::this_thread::sleep_for(std::chrono::microseconds(random_() % 40'000));
    process.send(SIGKILL);
    EXPECT_EQ(process.wait(), 128 + SIGKILL) << process.errors();
    return Printed(process.output());
  }

  fs::path queueFile() const { return folder_ / "downloadmanager.xml"; }

  std::string savedState() const {
    const auto items = DownloadManagerPersistence::readDownloadQueue(queueFile().wstring());
    const std::string state = stateOf(items);
    for (const auto* const item : items) delete item;
    return state;
  }

  /// What the operation that follows `count` others saves, from a queue of this content.
  std::vector<std::string> savedAfter(std::size_t count, const std::string& content,
                                      unsigned int seed) {
    support::writeFile(folder_ / "replay/downloadmanager.xml", content);
    return runHost(folder_ / "replay", seed, std::to_string(count + 1)).beforeLast;
  }

  support::TempDir folder_;
  std::mt19937 random_{std::random_device{}()};
};

TEST_F(QueueKill, LeavesTheLastAcknowledgedStateOrWhatTheNextOperationSaves) {
  std::size_t operations = 0;
  for (int kill = 0; kill < countOr(40); ++kill) {
    const auto seed = static_cast<unsigned int>(random_());
    SCOPED_TRACE("kill " + std::to_string(kill) + ", seed " + std::to_string(seed));
    const std::string before = support::readFile(queueFile());
    const std::string stateBefore = savedState();
    const std::vector<std::string> acknowledged = killHost(seed).acknowledged;
    ASSERT_FALSE(acknowledged.empty());
    ASSERT_EQ(acknowledged.front(), stateBefore);
    const std::size_t count = acknowledged.size() - 1;
    operations += count;
    const std::string found = savedState();
    if (found == acknowledged.back()) continue;
    ASSERT_THAT(savedAfter(count, before, seed), testing::Contains(found));
  }
  std::cout << operations << " operations were acknowledged" << std::endl;
  // What killed hosts left behind goes with the first that is not killed.
  runHost(folder_.path(), 0, "1");
  EXPECT_THAT(support::hiddenFilesIn(folder_.path()), testing::IsEmpty());
}

}  // namespace
}  // namespace soak
