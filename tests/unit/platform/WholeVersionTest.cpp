#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <string>

#include "kvpm/File.h"
#include "playerx/platform/FileIo.h"
#include "playerx/platform/FileVersions.h"
#include "playerx/platform/UnsyncedFiles.h"
#include "playerx/platform/VersionRecord.h"
#include "tests/support/TempDir.h"
#include "tests/unit/platform/FileFixture.h"

namespace {

namespace fs = std::filesystem;
using kvpm::File;
using platform_test::hiddenBeside;
using platform_test::read;
using platform_test::wide;
using playerx::VersionRecord;
using support::readFile;
using support::TempDir;

// What a power cut leaves is made by hand: contents torn without a change of their time, records of
// another boot of the machine. Files are synced only on demand.
class WholeVersion : public testing::Test {
 protected:
  void save(const std::string& text) {
    int error = 0;
    const auto version = versions_.begin(error);
    ASSERT_EQ(error, 0);
    const int file = version->file.descriptor();
    ASSERT_EQ(::ftruncate(file, 0), 0);
    ASSERT_EQ(playerx::writeFullyAt(file, text.data(), text.size(), 0).error, 0);
    version->blocks = playerx::BlockHashes();
    version->blocks.add(text.data(), text.size());
    ASSERT_EQ(versions_.publish(version), 0);
  }

  void saveAndSync(const std::string& text) {
    save(text);
    ASSERT_EQ(versions_.sync(), 0);
  }

  void saveTwo() {
    saveAndSync("on the disk");
    save("not yet there");
  }

  void tear() const {
    const auto time = fs::last_write_time(path_);
    support::writeFile(path_, std::string(fs::file_size(path_), '\0'));
    fs::last_write_time(path_, time);
  }

  void startMachineAnew() const {
    for (const fs::path& hidden : hiddenBeside(path_)) startMachineAnew(hidden);
    startMachineAnew(path_);
  }

  static void startMachineAnew(const fs::path& path) {
    const playerx::Descriptor file = playerx::openPlainFile(path);
    auto record = playerx::readRecord(file.get());
    if (!record || record->boot == VersionRecord::kOnDisk) return;
    record->boot += 2;
    ASSERT_TRUE(playerx::writeRecord(file.get(), *record));
  }

  int open(File& file) const { return file.open(wide(path_), kvpm::FileOpenRead); }

  std::string content() const {
    File file;
    EXPECT_EQ(open(file), 0);
    return read(file, 1000);
  }

  TempDir folder_;
  const fs::path path_ = folder_ / "queue.xml";
  playerx::FileVersions versions_{path_};
};

TEST_F(WholeVersion, IsFoundWhereAPowerCutHasTornTheLatest) {
  saveTwo();
  tear();
  startMachineAnew();
  EXPECT_EQ(content(), "on the disk");
}

TEST_F(WholeVersion, GetsTheNameOfTheTornOne) {
  saveTwo();
  tear();
  startMachineAnew();
  content();
  EXPECT_EQ(readFile(path_), "on the disk");
}

TEST_F(WholeVersion, IsFoundThroughALink) {
  saveTwo();
  tear();
  startMachineAnew();
  fs::create_symlink("queue.xml", folder_ / "link");
  File file;
  ASSERT_EQ(file.open(wide(folder_ / "link"), kvpm::FileOpenRead), 0);
  EXPECT_EQ(read(file, 1000), "on the disk");
  EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
}

TEST_F(WholeVersion, IsTheLatestIfThatReachedTheDisk) {
  saveTwo();
  startMachineAnew();
  EXPECT_EQ(content(), "not yet there");
}

TEST_F(WholeVersion, IsTheNewestOfSeveral) {
  saveAndSync("1");
  for (const std::string text : {"2", "3", "4"}) save(text);
  tear();
  startMachineAnew();
  EXPECT_EQ(content(), "3");
}

TEST_F(WholeVersion, IsNotTrustedBeforeTheFilesThatItMentionsAreOnTheDisk) {
  saveAndSync("downloading");
  playerx::addUnsyncedFile(folder_.write("film.avi", "film"));
  save("complete");
  startMachineAnew();
  EXPECT_EQ(content(), "downloading");
  playerx::syncUnsyncedFiles();
}

TEST_F(WholeVersion, IsTrustedOnceTheFilesThatItMentionsAreOnTheDisk) {
  saveAndSync("downloading");
  playerx::addUnsyncedFile(folder_.write("film.avi", "film"));
  saveAndSync("complete");
  startMachineAnew();
  EXPECT_EQ(content(), "complete");
}

TEST_F(WholeVersion, IsNotANewOneThatMentionsFilesNotOnTheDisk) {
  playerx::addUnsyncedFile(folder_.write("film.avi", "film"));
  save("complete");
  startMachineAnew();
  File file;
  EXPECT_EQ(open(file), ENOENT);
  playerx::syncUnsyncedFiles();
}

TEST_F(WholeVersion, IsAnyCompleteOneWhereAllOthersAreLost) {
  saveAndSync("downloading");
  playerx::addUnsyncedFile(folder_.write("film.avi", "film"));
  save("complete");
  startMachineAnew();
  for (const fs::path& hidden : hiddenBeside(path_)) fs::remove(hidden);
  EXPECT_EQ(content(), "complete");
  playerx::syncUnsyncedFiles();
}

TEST_F(WholeVersion, IsNeverOneThatWasDeleted) {
  saveTwo();
  fs::remove(path_);
  save("the first of another file");
  tear();
  startMachineAnew();
  File file;
  EXPECT_EQ(open(file), ENOENT);
}

TEST_F(WholeVersion, WithoutAnyTheFileIsMissing) {
  save("the first");
  tear();
  startMachineAnew();
  File file;
  EXPECT_EQ(open(file), ENOENT);
  save("the second");
  EXPECT_EQ(content(), "the second");
}

TEST_F(WholeVersion, IsAnyOfTheSameBoot) {
  saveTwo();
  tear();
  EXPECT_EQ(content(), std::string(13, '\0'));
}

TEST_F(WholeVersion, IsAnyThatWasOnTheDisk) {
  saveTwo();
  ASSERT_EQ(versions_.sync(), 0);
  tear();
  startMachineAnew();
  EXPECT_EQ(content(), std::string(13, '\0'));
}

TEST_F(WholeVersion, IsWhatAnotherProgramHasWrittenToTheFile) {
  saveTwo();
  support::writeFile(path_, "edited");
  fs::last_write_time(path_, fs::last_write_time(path_) + std::chrono::milliseconds(20));
  startMachineAnew();
  EXPECT_EQ(content(), "edited");
}

TEST_F(WholeVersion, IsTheFileThatAnotherProgramHasPutInItsPlace) {
  saveTwo();
  startMachineAnew();
  fs::rename(folder_.write("restored", "from a backup"), path_);
  EXPECT_EQ(content(), "from a backup");
}

TEST_F(WholeVersion, OfAnotherProgramIsKeptUntilTheNextIsOnTheDisk) {
  saveTwo();
  fs::rename(folder_.write("restored", "from a backup"), path_);
  save("on top of it");
  tear();
  startMachineAnew();
  EXPECT_EQ(content(), "from a backup");
}

TEST_F(WholeVersion, OfAnotherProgramIsKeptEvenWhenWrittenIntoOurs) {
  saveTwo();
  support::writeFile(path_, "edited");
  fs::last_write_time(path_, fs::last_write_time(path_) + std::chrono::milliseconds(20));
  save("on top of it");
  tear();
  startMachineAnew();
  EXPECT_EQ(content(), "edited");
}

TEST_F(WholeVersion, IsWhatAnEarlierReleaseHasWritten) {
  saveTwo();
  support::writeFile(path_, "of an earlier release");
  ::removexattr(path_.c_str(), "user.vesk");
  startMachineAnew();
  EXPECT_EQ(content(), "of an earlier release");
}

}  // namespace
