#include <gtest/gtest.h>
#include <sys/xattr.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <string>

#include "kvpm/File.h"
#include "playerx/platform/UnsyncedFiles.h"
#include "tests/unit/platform/VersionsFixture.h"

namespace {

namespace fs = std::filesystem;
using kvpm::File;
using platform_test::hiddenBeside;
using platform_test::read;
using platform_test::wide;
using support::readFile;

class WholeVersion : public platform_test::VersionsTest {
 protected:
  void saveTwo() {
    saveAndSync("on the disk");
    save("not yet there");
  }
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
