#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "kvpm/File.h"
#include "playerx/platform/FileSync.h"
#include "playerx/platform/VersionRecord.h"
#include "tests/support/TempDir.h"
#include "tests/unit/platform/FileFixture.h"

namespace {

namespace fs = std::filesystem;
using kvpm::File;
using platform_test::hiddenBeside;
using platform_test::read;
using platform_test::replace;
using platform_test::wide;
using playerx::VersionRecord;
using support::readFile;
using support::TempDir;

// What a power cut leaves is made by hand: contents torn without a change of their time, records of
// another run of the machine.
class WholeVersion : public testing::Test {
 protected:
  // Puts one version on the disk, and another in its place.
  void saveTwo() {
    save("on the disk");
    playerx::flushFileSyncs();
    save("not yet there");
  }

  void save(const std::string& content) { ASSERT_EQ(replace(path_, content), 0); }

  static void tear(const fs::path& path) {
    const auto time = fs::last_write_time(path);
    support::writeFile(path, std::string(fs::file_size(path), '\0'));
    fs::last_write_time(path, time);
  }

  void startMachineAnew() {
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
};

TEST_F(WholeVersion, IsFoundWhereAPowerCutHasTornTheLatest) {
  saveTwo();
  tear(path_);
  startMachineAnew();
  EXPECT_EQ(content(), "on the disk");
}

TEST_F(WholeVersion, GetsTheNameOfTheTornOne) {
  saveTwo();
  tear(path_);
  startMachineAnew();
  content();
  EXPECT_EQ(readFile(path_), "on the disk");
}

TEST_F(WholeVersion, IsFoundThroughALink) {
  saveTwo();
  tear(path_);
  startMachineAnew();
  fs::create_symlink("queue.xml", folder_ / "link");
  File file;
  ASSERT_EQ(file.open(wide(folder_ / "link"), kvpm::FileOpenRead), 0);
  EXPECT_EQ(read(file, 1000), "on the disk");
  EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
}

TEST_F(WholeVersion, IsTheLatestIfThatCameThrough) {
  saveTwo();
  startMachineAnew();
  EXPECT_EQ(content(), "not yet there");
}

TEST_F(WholeVersion, IsTheNewestOfSeveral) {
  for (const std::string text : {"1", "2", "3", "4"}) {
    save(text);
    std::ifstream reader(path_);  // so that each gets a file of its own
    save(text + " as well");
  }
  tear(path_);
  startMachineAnew();
  EXPECT_EQ(content(), "4");
}

TEST_F(WholeVersion, IsNeverOneThatWasDeleted) {
  saveTwo();
  fs::remove(path_);
  save("the first of another file");
  tear(path_);
  startMachineAnew();
  File file;
  EXPECT_EQ(open(file), ENOENT);
}

TEST_F(WholeVersion, WithoutAnyTheFileIsNotThere) {
  save("the first");
  tear(path_);
  startMachineAnew();
  File file;
  EXPECT_EQ(open(file), ENOENT);
  save("the second");
  EXPECT_EQ(content(), "the second");
}

TEST_F(WholeVersion, IsAnyOfTheSameRunOfTheMachine) {
  saveTwo();
  tear(path_);
  EXPECT_EQ(content(), std::string(13, '\0'));
}

TEST_F(WholeVersion, IsAnyThatWasOnTheDisk) {
  saveTwo();
  playerx::flushFileSyncs();
  tear(path_);
  startMachineAnew();
  EXPECT_EQ(content(), std::string(13, '\0'));
}

TEST_F(WholeVersion, IsWhatSomebodyElseHasWrittenToTheFile) {
  saveTwo();
  support::writeFile(path_, "edited");
  fs::last_write_time(path_, fs::last_write_time(path_) + std::chrono::milliseconds(20));
  startMachineAnew();
  EXPECT_EQ(content(), "edited");
}

TEST_F(WholeVersion, IsWhatSomebodyElseHasPutInThePlaceOfTheFile) {
  saveTwo();
  startMachineAnew();
  fs::rename(folder_.write("restored", "from a backup"), path_);
  EXPECT_EQ(content(), "from a backup");
}

TEST_F(WholeVersion, OfSomebodyElseIsKeptUntilTheNextIsOnTheDisk) {
  saveTwo();
  fs::rename(folder_.write("restored", "from a backup"), path_);
  save("on top of it");
  tear(path_);
  startMachineAnew();
  EXPECT_EQ(content(), "from a backup");
}

TEST_F(WholeVersion, OfSomebodyElseIsKeptAlsoWhereItWasWrittenIntoOurs) {
  saveTwo();
  support::writeFile(path_, "edited");
  fs::last_write_time(path_, fs::last_write_time(path_) + std::chrono::milliseconds(20));
  save("on top of it");
  tear(path_);
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
