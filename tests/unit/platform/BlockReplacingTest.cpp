#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>

#include "kvpm/File.h"
#include "playerx/platform/UnsyncedFiles.h"
#include "tests/support/WaitFor.h"
#include "tests/unit/platform/VersionsFixture.h"

namespace {

namespace fs = std::filesystem;
using kvpm::File;
using platform_test::hiddenBeside;
using platform_test::read;
using platform_test::wide;
using playerx::BlockHashes;
using playerx::Descriptor;
using playerx::VersionRecord;
using support::readFile;

/// A block of one letter.
std::string block(char letter) { return std::string(BlockHashes::kBlock, letter); }

/// Three blocks and a bit more.
std::string blocks(char first, char second, char third) {
  return block(first) + block(second) + block(third) + "end";
}

class BlockReplacing : public platform_test::VersionsTest {
 protected:
  void saveTwo() {
    saveAndSync(blocks('a', 'b', 'c'));
    save(blocks('a', 'B', 'c'));
  }

  bool replaceBlock(std::size_t index, char letter) {
    return versions_.replaceBlock(index, block(letter).data());
  }

  /// Leaves the file as a writer that is killed before it has changed anything.
  void beginToReplace() const {
    changeRecord(path_,
                 [](VersionRecord& record) { record.modified = VersionRecord::kBeingChanged; });
  }
};

TEST_F(BlockReplacing, ChangesTheFileItself) {
  saveTwo();
  const auto inode = [&] {
    struct stat status {};
    EXPECT_EQ(::stat(path_.c_str(), &status), 0);
    return status.st_ino;
  };
  const ino_t before = inode();
  for (const char letter : {'C', 'D', 'E'}) {
    EXPECT_TRUE(replaceBlock(2, letter));
    EXPECT_EQ(content(), blocks('a', 'B', letter));
  }
  EXPECT_EQ(inode(), before);
}

TEST_F(BlockReplacing, ALaterVersionKnowsOfIt) {
  saveTwo();
  ASSERT_TRUE(replaceBlock(0, 'A'));
  const auto present = versions_.present();
  ASSERT_TRUE(present);
  BlockHashes now;
  const std::string text = blocks('A', 'B', 'c');
  now.add(text.data(), text.size());
  for (std::size_t i = 0; i < 3; ++i) EXPECT_TRUE(now.hasSameBlock(i, present->blocks)) << i;
}

TEST_F(BlockReplacing, IsRefusedBeforeTheFirstVersion) {
  support::writeFile(path_, blocks('a', 'b', 'c'));
  EXPECT_FALSE(replaceBlock(0, 'A'));
  EXPECT_EQ(readFile(path_), blocks('a', 'b', 'c'));
}

TEST_F(BlockReplacing, IsRefusedWhereThatIsTheVersionOnTheDisk) {
  saveTwo();
  ASSERT_EQ(versions_.sync(), 0);
  EXPECT_FALSE(replaceBlock(0, 'A'));
  EXPECT_EQ(readFile(path_), blocks('a', 'B', 'c'));
}

TEST_F(BlockReplacing, IsRefusedWhereTheVersionIsAboutToReachTheDisk) {
  saveTwo();
  save(blocks('a', 'B', 'C'));
  versions_.addSpare();  // keeps it while it is copied
  EXPECT_FALSE(replaceBlock(0, 'A'));
  EXPECT_EQ(readFile(path_), blocks('a', 'B', 'C'));
}

// Only a new file is sure to reach the disk.
TEST_F(BlockReplacing, IsRefusedWhereTheVersionCouldNotBeSynced) {
  save(blocks('a', 'b', 'c'));
  const Version version = save(blocks('a', 'B', 'c'));
  ASSERT_TRUE(version);
  version->hasFailed = true;
  EXPECT_FALSE(replaceBlock(0, 'A'));
}

TEST_F(BlockReplacing, IsRefusedInAFileThatWasGivenAway) {
  saveTwo();
  const bool isGivenAway = ::chown(path_.c_str(), 12345, 23456) == 0;
  EXPECT_EQ(replaceBlock(0, 'A'), !isGivenAway);
}

TEST_F(BlockReplacing, ThatFailsLeavesTheHashToTell) {
  saveTwo();
  {
    const platform_test::FileSizeLimit limit(BlockHashes::kBlock);
    EXPECT_FALSE(replaceBlock(2, 'C'));
  }
  EXPECT_EQ(readFile(path_), blocks('a', 'B', 'c'));
  const auto record = playerx::readRecord(playerx::openPlainFile(path_).get());
  ASSERT_TRUE(record);
  EXPECT_EQ(record->modified, VersionRecord::kBeingChanged);
}

TEST_F(BlockReplacing, IsRefusedAsLongAsSomebodyReadsTheFile) {
  saveTwo();
  {
    File file;
    ASSERT_EQ(file.open(wide(path_), kvpm::FileOpenRead), 0);
    EXPECT_FALSE(replaceBlock(0, 'A'));
    EXPECT_EQ(read(file, 20'000), blocks('a', 'B', 'c'));
  }
  EXPECT_TRUE(replaceBlock(0, 'A'));
}

TEST_F(BlockReplacing, IsRefusedInACopyByAHardLink) {
  saveTwo();
  fs::create_hard_link(path_, folder_ / "backup");
  EXPECT_FALSE(replaceBlock(0, 'A'));
  EXPECT_EQ(readFile(folder_ / "backup"), blocks('a', 'B', 'c'));
}

TEST_F(BlockReplacing, IsRefusedInWhatAnotherProgramHasWritten) {
  saveTwo();
  support::writeFile(path_, blocks('x', 'y', 'z'));
  fs::last_write_time(path_, fs::last_write_time(path_) + std::chrono::milliseconds(20));
  EXPECT_FALSE(replaceBlock(0, 'A'));
  fs::rename(folder_.write("restored", blocks('1', '2', '3')), path_);
  EXPECT_FALSE(replaceBlock(0, 'A'));
  EXPECT_EQ(readFile(path_), blocks('1', '2', '3'));
}

TEST_F(BlockReplacing, SurvivesAPowerCutWhereItReachedTheDisk) {
  saveTwo();
  ASSERT_TRUE(replaceBlock(0, 'A'));
  startMachineAnew();
  EXPECT_EQ(content(), blocks('A', 'B', 'c'));
}

TEST_F(BlockReplacing, IsUndoneByAPowerCutThatTearsTheFile) {
  saveTwo();
  ASSERT_TRUE(replaceBlock(0, 'A'));
  tear();
  startMachineAnew();
  EXPECT_EQ(content(), blocks('a', 'b', 'c'));
}

TEST_F(BlockReplacing, OfAKilledWriterIsReadAsItIs) {
  saveTwo();
  beginToReplace();
  support::writeFile(path_, blocks('A', 'B', 'c'));
  EXPECT_EQ(content(), blocks('A', 'B', 'c'));
}

TEST_F(BlockReplacing, OfAKilledWriterIsUndoneByAPowerCut) {
  saveTwo();
  beginToReplace();
  support::writeFile(path_, blocks('A', 'B', 'c'));
  startMachineAnew();
  EXPECT_EQ(content(), blocks('a', 'b', 'c'));
}

TEST_F(BlockReplacing, ThatNeverBeganLeavesTheVersionAsGoodAsBefore) {
  saveTwo();
  beginToReplace();
  startMachineAnew();
  EXPECT_EQ(content(), blocks('a', 'B', 'c'));
}

TEST_F(BlockReplacing, RemembersWhichFilesTheNewContentMentions) {
  saveTwo();
  playerx::addUnsyncedFile(folder_.write("film.avi", "film"));
  ASSERT_TRUE(replaceBlock(0, 'A'));
  startMachineAnew();
  EXPECT_EQ(content(), blocks('a', 'b', 'c'));
  playerx::syncUnsyncedFiles();
}

TEST_F(BlockReplacing, ASpareThatIsGivenBackIsTakenAgain) {
  saveTwo();
  save(blocks('a', 'B', 'C'));
  int error = 0;
  const Version spare = versions_.begin(error);
  const int file = spare->file.descriptor();
  const auto hidden = hiddenBeside(path_).size();
  versions_.giveBack(spare);
  EXPECT_EQ(hiddenBeside(path_).size(), hidden);
  EXPECT_EQ(versions_.begin(error)->file.descriptor(), file);
}

TEST_F(BlockReplacing, ASpareThatIsGivenBackIsItsOwnersAloneAndMayBeOpened) {
  saveTwo();
  save(blocks('a', 'B', 'C'));
  ASSERT_EQ(::chmod(path_.c_str(), 0644), 0);
  int error = 0;
  versions_.giveBack(versions_.begin(error));
  for (const fs::path& hidden : hiddenBeside(path_)) {
    EXPECT_EQ(fs::status(hidden).permissions(), fs::perms(0600));
    EXPECT_TRUE(playerx::openPlainFile(hidden));
  }
}

TEST_F(BlockReplacing, ANewFileThatIsGivenBackIsASpare) {
  save(blocks('a', 'b', 'c'));
  int error = 0;
  const Version made = versions_.begin(error);
  const int file = made->file.descriptor();
  versions_.giveBack(made);
  EXPECT_EQ(versions_.begin(error)->file.descriptor(), file);
}

/// Says that one byte changes, in a file that is not synced just then, and writes.
void changeInPlace(const fs::path& path, File& file) {
  const std::string text = blocks('a', 'b', 'c');
  std::string changed = text;
  changed.front() = 'A';
  do {
    ASSERT_EQ(platform_test::replace(path, text), 0);
    ASSERT_EQ(file.open(wide(path), kvpm::FileOpenWrite), 0);
    file.expectChange(0, 1);
    ASSERT_EQ(platform_test::write(file, changed), static_cast<std::int64_t>(changed.size()));
  } while (readFile(path) != changed);
}

TEST_F(BlockReplacing, EndsTheContent) {
  File file;
  changeInPlace(path_, file);
  EXPECT_EQ(platform_test::write(file, "more than was said"), -1);
  EXPECT_EQ(file.close(), EINVAL);
}

TEST_F(BlockReplacing, IsOnTheDiskOnceItIsSynced) {
  File file;
  changeInPlace(path_, file);
  ASSERT_EQ(file.sync(), 0);
  const auto record = playerx::readRecord(playerx::openPlainFile(path_).get());
  ASSERT_TRUE(record);
  EXPECT_EQ(record->boot, VersionRecord::kOnDisk);
  EXPECT_EQ(file.close(), 0);
}

TEST_F(BlockReplacing, OneWhoOpensTheFileMeanwhileWaits) {
  support::writeFile(path_, "content");
  const Descriptor file(::open(path_.c_str(), O_RDWR | O_CLOEXEC));
  ASSERT_EQ(::fcntl(file.get(), F_SETSIG, SIGURG), 0);
  ASSERT_EQ(::fcntl(file.get(), F_SETLEASE, F_WRLCK), 0);
  std::string found;
  std::thread reader([&] { found = content(); });
  // The lease is being broken.
  EXPECT_TRUE(support::waitFor([&] { return ::fcntl(file.get(), F_GETLEASE) != F_WRLCK; }));
  EXPECT_EQ(::fcntl(file.get(), F_SETLEASE, F_UNLCK), 0);
  reader.join();
  EXPECT_EQ(found, "content");
}

}  // namespace
