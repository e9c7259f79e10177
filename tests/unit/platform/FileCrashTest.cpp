#include <gtest/gtest.h>

#include <climits>
#include <csignal>
#include <filesystem>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "kvpm/File.h"
#include "playerx/platform/FileSync.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"
#include "tests/support/WaitFor.h"
#include "tests/unit/platform/FileFixture.h"

namespace {

namespace fs = std::filesystem;
using support::TempDir;

// The version that the file holds; 0 when it does not hold exactly one whole version.
unsigned long wholeVersion(const std::string& content) {
  std::istringstream lines(content);
  unsigned long version = 0;
  unsigned long count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    if (line.starts_with("lines ")) {
      const bool last = lines.peek() == std::istringstream::traits_type::eof();
      return last && line == "lines " + std::to_string(count) ? version : 0;
    }
    const unsigned long read = std::stoul(line);
    if (count > 0 && read != version) return 0;
    version = read;
  }
  return 0;
}

// As `wholeVersion`, of a file in which one block changes.
unsigned long wholeBlock(const std::string& content) {
  constexpr std::size_t kBlock = 4096;
  if (content.size() != 3 * kBlock) return 0;
  if (content.substr(0, kBlock) != std::string(kBlock, 'x')) return 0;
  if (content.substr(2 * kBlock) != std::string(kBlock, 'y')) return 0;
  std::istringstream lines(content.substr(kBlock, kBlock));
  std::string first;
  std::getline(lines, first);
  for (std::string line; std::getline(lines, line);) {
    if (line != first) return 0;
  }
  return std::stoul(first);
}

/// Kills writers of a file and looks at what each has left.
void killWriters(const std::vector<std::string>& kind,
                 unsigned long (*versionOf)(const std::string&)) {
  const TempDir folder;
  const fs::path path = folder / "queue.xml";
  std::mt19937 random(20240501);
  std::uniform_int_distribution<std::size_t> versions(1, 40);
  unsigned long known = 0;
  for (int killing = 0; killing < 60; ++killing) {
    std::vector<std::string> command = {FILE_REWRITER, path.string(), std::to_string(known + 1)};
    command.insert(command.end(), kind.begin(), kind.end());
    support::Process writer(command);
    const std::size_t enough = versions(random);
    ASSERT_TRUE(support::waitFor([&] { return writer.output().size() >= enough; }));
    writer.send(SIGKILL);
    ASSERT_EQ(writer.wait(), 128 + SIGKILL);
    const unsigned long found = versionOf(support::readFile(path));
    // What was in place stays in place; one more may have come since it was last announced.
    const unsigned long announced = known + writer.output().size();
    ASSERT_TRUE(found == announced || found == announced + 1) << found << " of " << announced;
    known = found;
  }
}

TEST(FileCrash, AWriterKilledAtAnyInstantLeavesACompleteVersion) { killWriters({}, wholeVersion); }

TEST(FileCrash, AWriterKilledWithinASmallChangeLeavesTheOldBlockOrTheNew) {
  killWriters({std::to_string(ULONG_MAX), "block"}, wholeBlock);
}

TEST(FileCrash, ReadersFindACompleteVersionWhileProcessesCompete) {
  const TempDir folder;
  const fs::path path = folder / "queue.xml";
  support::Process writer({FILE_REWRITER, path.string(), "1", "300"});
  support::Process other({FILE_REWRITER, path.string(), "1000", "1300"});
  ASSERT_TRUE(support::waitFor([&] { return fs::exists(path); }));
  while (writer.running() || other.running()) {
    ASSERT_NE(wholeVersion(support::readFile(path)), 0U);
  }
  EXPECT_EQ(writer.wait(), 0);
  EXPECT_EQ(other.wait(), 0);
  const fs::directory_iterator all(folder.path());
  EXPECT_EQ(std::distance(begin(all), end(all)), 1);
}

TEST(FileCrash, ReadersFindTheOldBlockOrTheNewWhileItChanges) {
  const TempDir folder;
  const fs::path path = folder / "queue.xml";
  support::Process writer({FILE_REWRITER, path.string(), "1", "3000", "block"});
  ASSERT_TRUE(support::waitFor([&] { return fs::exists(path); }));
  while (writer.running()) {
    kvpm::File file;
    ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenRead), 0);
    ASSERT_NE(wholeBlock(platform_test::read(file, 20'000)), 0U);
  }
  EXPECT_EQ(writer.wait(), 0);
  EXPECT_EQ(wholeBlock(support::readFile(path)), 3000U);
}

TEST(FileCrash, TheNextWriteRemovesWhatKilledWritersLeft) {
  const TempDir folder;
  const fs::path path = folder / "queue.xml";
  for (int killing = 0; killing < 20; ++killing) {
    support::Process writer({FILE_REWRITER, path.string(), "1"});
    ASSERT_TRUE(support::waitFor([&] { return !writer.output().empty(); }));
    writer.send(SIGKILL);
    ASSERT_TRUE(writer.wait());
  }
  folder.write(".queue.xml.00000000deadbeef.new", "of one more");
  kvpm::File file;
  ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenWrite), 0);
  ASSERT_EQ(file.close(), 0);
  playerx::flushFileSyncs();
  const fs::directory_iterator all(folder.path());
  EXPECT_EQ(std::distance(begin(all), end(all)), 1);
}

}  // namespace
