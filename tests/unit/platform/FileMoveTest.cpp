#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "playerx/platform/FileMove.h"
#include "playerx/platform/Rename.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using support::readFile;
using support::TempDir;

// All methods give the same guarantees.
using Move = int (*)(const fs::path&, const fs::path&);

class FileMove : public testing::TestWithParam<Move> {
 protected:
  int move(const std::string& from, const std::string& to) {
    return GetParam()(folder_ / from, folder_ / to);
  }
  std::size_t files() const {
    const fs::directory_iterator all(folder_.path());
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
  }

  TempDir folder_;
};

INSTANTIATE_TEST_SUITE_P(Whole, FileMove, testing::Values(&playerx::moveFileWithoutOverwriting));
INSTANTIATE_TEST_SUITE_P(InOneStep, FileMove, testing::Values(&playerx::renameInOneStep));
INSTANTIATE_TEST_SUITE_P(BySecondName, FileMove, testing::Values(&playerx::renameBySecondName));
INSTANTIATE_TEST_SUITE_P(OntoPlaceholder, FileMove,
                         testing::Values(&playerx::renameOntoPlaceholder));
INSTANTIATE_TEST_SUITE_P(Copying, FileMove, testing::Values(&playerx::moveFileByCopying));

TEST_P(FileMove, MovesTheContent) {
  const std::string film(1'100'001, 'f');
  folder_.write("from", film);
  EXPECT_EQ(move("from", "to"), 0);
  EXPECT_EQ(readFile(folder_ / "to"), film);
  EXPECT_EQ(files(), 1U);
}

TEST_P(FileMove, MovesAnEmptyFile) {
  folder_.write("from", "");
  EXPECT_EQ(move("from", "to"), 0);
  EXPECT_EQ(readFile(folder_ / "to"), "");
  EXPECT_EQ(files(), 1U);
}

TEST_P(FileMove, KeepsPermissionsAndTime) {
  folder_.write("from", "film");
  ASSERT_EQ(::chmod((folder_ / "from").c_str(), 0640), 0);
  const auto time = fs::last_write_time(folder_ / "from") - std::chrono::hours(24);
  fs::last_write_time(folder_ / "from", time);
  EXPECT_EQ(move("from", "to"), 0);
  EXPECT_EQ(fs::status(folder_ / "to").permissions(), fs::perms(0640));
  EXPECT_EQ(fs::last_write_time(folder_ / "to"), time);
}

TEST_P(FileMove, NeverOverwritesAFile) {
  folder_.write("from", "new");
  folder_.write("to", "old");
  EXPECT_EQ(move("from", "to"), EEXIST);
  EXPECT_EQ(readFile(folder_ / "from"), "new");
  EXPECT_EQ(readFile(folder_ / "to"), "old");
}

TEST_P(FileMove, NeverOverwritesALinkThatLeadsNowhere) {
  folder_.write("from", "new");
  fs::create_symlink("nowhere", folder_ / "to");
  EXPECT_EQ(move("from", "to"), EEXIST);
  EXPECT_EQ(files(), 2U);
  EXPECT_TRUE(fs::is_symlink(folder_ / "to"));
}

TEST_P(FileMove, DoesNotMoveIntoAFolderOfThatName) {
  folder_.write("from", "new");
  fs::create_directory(folder_ / "to");
  EXPECT_EQ(move("from", "to"), EEXIST);
  EXPECT_TRUE(fs::is_empty(folder_ / "to"));
}

TEST_P(FileMove, AFileIsNotMovedOntoItself) {
  folder_.write("from", "film");
  EXPECT_EQ(move("from", "from"), EEXIST);
  EXPECT_EQ(readFile(folder_ / "from"), "film");
}

TEST_P(FileMove, FailsForAMissingFile) {
  EXPECT_EQ(move("from", "to"), ENOENT);
  EXPECT_EQ(files(), 0U);
}

TEST_P(FileMove, FailsIntoAMissingFolder) {
  folder_.write("from", "film");
  folder_.write("file", "");
  EXPECT_EQ(move("from", "nowhere/to"), ENOENT);
  EXPECT_EQ(move("from", "file/to"), ENOTDIR);
  EXPECT_EQ(readFile(folder_ / "from"), "film");
}

TEST_P(FileMove, AcceptsTheLongestNames) {
  const std::string longest(255, 'n');
  folder_.write("from", "film");
  EXPECT_EQ(move("from", longest), 0);
  EXPECT_EQ(move(longest, "from"), 0);
  EXPECT_EQ(readFile(folder_ / "from"), "film");
}

TEST_P(FileMove, OnlyOneOfManyGetsTheName) {
  constexpr int kMovers = 8;
  for (int mover = 0; mover < kMovers; ++mover) {
    folder_.write(std::to_string(mover), std::to_string(mover));
  }
  std::vector<int> results(kMovers, -1);
  std::vector<std::thread> threads;
  for (int mover = 0; mover < kMovers; ++mover) {
    threads.emplace_back([&, mover] { results[mover] = move(std::to_string(mover), "to"); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(std::count(results.begin(), results.end(), 0), 1);
  EXPECT_EQ(std::count(results.begin(), results.end(), EEXIST), kMovers - 1);
  const auto winner = std::find(results.begin(), results.end(), 0) - results.begin();
  EXPECT_EQ(readFile(folder_ / "to"), std::to_string(winner));
  EXPECT_EQ(files(), static_cast<std::size_t>(kMovers));
}

// A folder in memory, which on most machines is another file system than that of temporary files.
class FolderInMemory {
 public:
  FolderInMemory() {
    std::string name = "/dev/shm/vesk-" + std::string(6, 'X');
    path_ = ::mkdtemp(name.data()) == nullptr ? fs::path() : fs::path(name);
  }
  ~FolderInMemory() { fs::remove_all(path_); }
  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

TEST(FileMoveAcross, MovesToAnotherFileSystemAndBack) {
  const TempDir disk;
  const FolderInMemory memory;
  ASSERT_FALSE(memory.path().empty());
  const std::string film(1'200'000, 'f');
  disk.write("film", film);
  ASSERT_EQ(playerx::moveFileWithoutOverwriting(disk / "film", memory.path() / "film"), 0);
  EXPECT_FALSE(fs::exists(disk / "film"));
  EXPECT_EQ(readFile(memory.path() / "film"), film);
  ASSERT_EQ(playerx::moveFileWithoutOverwriting(memory.path() / "film", disk / "back"), 0);
  EXPECT_EQ(readFile(disk / "back"), film);
  EXPECT_TRUE(fs::is_empty(memory.path()));
}

TEST(FileMoveAcross, NeverOverwritesThereEither) {
  const TempDir disk;
  const FolderInMemory memory;
  ASSERT_FALSE(memory.path().empty());
  disk.write("film", "new");
  support::writeFile(memory.path() / "film", "old");
  EXPECT_EQ(playerx::moveFileWithoutOverwriting(disk / "film", memory.path() / "film"), EEXIST);
  EXPECT_EQ(readFile(disk / "film"), "new");
  EXPECT_EQ(readFile(memory.path() / "film"), "old");
}

TEST(FileMoveByCopying, RemovesTheLeftoversOfADeadMove) {
  const TempDir folder;
  folder.write("from", "film");
  folder.write(".to.0123456789abcdef.new", "half a film");
  EXPECT_EQ(playerx::moveFileByCopying(folder / "from", folder / "to"), 0);
  EXPECT_FALSE(fs::exists(folder / ".to.0123456789abcdef.new"));
}

TEST(FileMoveByCopying, LeavesNothingWhenTheNameIsTakenDuringTheCopy) {
  const TempDir folder;
  const TempDir sources;
  std::vector<std::thread> threads;
  for (const std::string name : {"a", "b", "c", "d"}) {
    sources.write(name, std::string(1'000'000, 'f'));
    threads.emplace_back([&, name] { playerx::moveFileByCopying(sources / name, folder / "to"); });
  }
  for (std::thread& thread : threads) thread.join();
  const fs::directory_iterator all(folder.path());
  EXPECT_EQ(std::distance(begin(all), end(all)), 1);
}

TEST(FileMoveNever, MovesAFolder) {
  for (const Move move : {&playerx::moveFileWithoutOverwriting, &playerx::moveFileByCopying}) {
    const TempDir folder;
    fs::create_directory(folder / "from");
    EXPECT_NE(move(folder / "from", folder / "to"), 0);
    EXPECT_TRUE(fs::exists(folder / "from"));
    EXPECT_FALSE(fs::exists(folder / "to"));
  }
}

TEST(FileMoveByCopying, CopiesNoPipe) {
  const TempDir folder;
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(playerx::moveFileByCopying(folder / "pipe", folder / "to"), EINVAL);
  EXPECT_FALSE(fs::exists(folder / "to"));
}

}  // namespace
