#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "kvpm/File.h"
#include "kvpm/PathTools.h"
#include "playerx/platform/FileSync.h"
#include "playerx/platform/FileVersions.h"
#include "playerx/platform/VersionRecord.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"
#include "tests/unit/platform/FileFixture.h"

namespace {

namespace fs = std::filesystem;
using kvpm::File;
using platform_test::filesIn;
using platform_test::hiddenBeside;
using platform_test::read;
using platform_test::replace;
using platform_test::wide;
using support::readFile;
using support::TempDir;

ino_t inodeOf(const fs::path& path) {
  struct stat status {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0);
  return status.st_ino;
}

// The bytes that this process has handed to the system so far.
std::uint64_t bytesWritten() {
  std::ifstream counters("/proc/self/io");
  std::uint64_t bytes = 0;
  for (std::string word; counters >> word && word != "wchar:";) continue;
  counters >> bytes;
  return bytes;
}

// Makes a text of one character the next version; returns 0 or an error number.
int saveTo(playerx::FileVersions& versions, const std::string& content) {
  int error = 0;
  const auto version = versions.begin(error);
  if (error != 0) return error;
  const int file = version->file.descriptor();
  if (::pwrite(file, content.data(), content.size(), 0) != 1) return EIO;
  return versions.publish(version);
}

class FileVersions : public testing::Test {
 protected:
  void save(const std::string& content) { ASSERT_EQ(replace(path_, content), 0); }
  void saveTimes(int times) {
    for (int version = 0; version < times; ++version) save("version " + std::to_string(version));
  }

  TempDir folder_;
  const fs::path path_ = folder_ / "queue.xml";
};

TEST_F(FileVersions, OverwriteSpareOnes) {
  std::set<ino_t> inodes;
  for (int version = 0; version < 100; ++version) {
    save(std::to_string(version));
    EXPECT_EQ(readFile(path_), std::to_string(version));
    inodes.insert(inodeOf(path_));
    if (version % 10 == 0) playerx::flushFileSyncs();
  }
  EXPECT_LE(inodes.size(), 5U);
  EXPECT_LE(filesIn(folder_), 4U);
}

TEST_F(FileVersions, AFileThatIsSavedOftenIsGivenASpareBeforeItsSync) {
  playerx::FileVersions versions(path_);  // no other thread syncs these
  ASSERT_EQ(saveTo(versions, "1"), 0);
  EXPECT_EQ(versions.sync(), 0);
  for (const char* content : {"2", "3"}) ASSERT_EQ(saveTo(versions, content), 0);
  versions.addSpare();
  EXPECT_EQ(versions.sync(), 0);
  EXPECT_EQ(filesIn(folder_), 4U);
  std::set<ino_t> inodes;
  for (int version = 0; version < 10; ++version) {
    ASSERT_EQ(saveTo(versions, std::to_string(version)), 0);
    EXPECT_EQ(readFile(path_), std::to_string(version));
    inodes.insert(inodeOf(path_));
  }
  EXPECT_LE(inodes.size(), 3U);
}

TEST_F(FileVersions, WhatAnotherProgramWroteInPlaceIsInNoSpare) {
  const std::string blocks(100'000, 'x');
  save(blocks);
  playerx::flushFileSyncs();
  for (const char* const end : {"1", "2"}) save(blocks + end);
  std::fstream(path_, std::ios::in | std::ios::out | std::ios::binary) << "ZZZ";
  playerx::flushFileSyncs();
  for (const char* const end : {"3", "4", "5"}) {
    save(blocks + end);
    EXPECT_EQ(readFile(path_), blocks + end);
  }
}

TEST_F(FileVersions, RememberHowTheLastSaveEnded) {
  EXPECT_EQ(playerx::lastSaveError(path_), 0);
  fs::create_directories(path_);
  EXPECT_EQ(replace(path_, "new"), EISDIR);
  EXPECT_EQ(playerx::lastSaveError(path_), EISDIR);
  fs::remove(path_);
  save("new");
  EXPECT_EQ(playerx::lastSaveError(path_), 0);
  {
    File dropped;
    EXPECT_EQ(dropped.open(wide(path_), kvpm::FileOpenWrite), 0);
  }
  EXPECT_EQ(playerx::lastSaveError(path_), ECANCELED);
}

TEST_F(FileVersions, OnlyBlocksThatDifferAreWritten) {
  std::string content(1'000'000, 'q');
  for (int version = 0; version < 8; ++version) {
    save(content);
    if (version % 4 == 3) playerx::flushFileSyncs();
  }
  for (const std::size_t place : {0U, 500'000U, 999'999U}) {
    const std::uint64_t before = bytesWritten();
    content[place] = 'x';
    save(content);
    EXPECT_LT(bytesWritten() - before, 30'000U);
    EXPECT_EQ(readFile(path_), content);
  }
}

TEST_F(FileVersions, AChangeOfLengthIsWrittenToTwoOfThemAlone) {
  std::string content;
  for (int number = 0; content.size() < 1'000'000; ++number) content += std::to_string(number);
  for (int version = 0; version < 4; ++version) save(content);
  std::uint64_t fewest = content.size();  // a sync that happens meanwhile keeps one of the two
  for (int round = 0; round < 5; ++round) {
    content.insert(0, "x");
    save(content);
    save(content);
    const std::uint64_t before = bytesWritten();
    save(content);
    fewest = std::min(fewest, bytesWritten() - before);
  }
  EXPECT_LT(fewest, 30'000U);
}

TEST_F(FileVersions, MayGrowAndShrinkByAnyNumberOfBytes) {
  std::string content;
  for (const std::size_t size : {0U, 1U, 4095U, 4096U, 4097U, 9000U, 8192U, 8191U, 20'000U, 3U}) {
    content.resize(size, static_cast<char>('a' + size % 26));
    for (int again = 0; again < 3; ++again) save(content);
    EXPECT_EQ(readFile(path_), content);
  }
}

TEST_F(FileVersions, MayBeWrittenInPiecesOfAnySize) {
  const std::string content = std::string(5000, 'a') + std::string(5000, 'b');
  for (const std::size_t piece : {1U, 7U, 4095U, 4096U, 4097U, 9999U}) {
    File file;
    ASSERT_EQ(file.open(wide(path_), kvpm::FileOpenWrite), 0);
    for (std::size_t at = 0; at < content.size(); at += piece) {
      platform_test::write(file, content.substr(at, piece));
    }
    ASSERT_EQ(file.close(), 0);
    EXPECT_EQ(readFile(path_), content);
  }
}

TEST_F(FileVersions, OneThatIsOpenElsewhereIsNotOverwritten) {
  saveTimes(3);
  std::ifstream reader(path_);
  saveTimes(10);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader), {}), "version 2");
}

TEST_F(FileVersions, OneThatIsBeingOverwrittenCannotBeOpened) {
  saveTimes(5);
  playerx::flushFileSyncs();
  saveTimes(5);
  File file;
  ASSERT_EQ(file.open(wide(path_), kvpm::FileOpenWrite), 0);
  int refused = 0;
  for (const fs::path& hidden : hiddenBeside(path_)) {
    if (!playerx::openPlainFile(hidden) && errno == EWOULDBLOCK) ++refused;
  }
  EXPECT_EQ(refused, 1);
}

TEST_F(FileVersions, OneWithASecondNameIsNotOverwritten) {
  saveTimes(3);
  fs::create_hard_link(path_, folder_ / "backup.xml");
  const fs::perms permissions = fs::status(path_).permissions();
  saveTimes(10);
  EXPECT_EQ(readFile(folder_ / "backup.xml"), "version 2");
  EXPECT_EQ(fs::status(folder_ / "backup.xml").permissions(), permissions);
}

TEST_F(FileVersions, AHiddenOneChangedByAnotherProgramIsNotTrusted) {
  const std::string content(100'000, 'q');
  for (int version = 0; version < 4; ++version) save(content);
  for (const fs::path& hidden : hiddenBeside(path_)) support::writeFile(hidden, "x");
  for (int version = 0; version < 4; ++version) {
    save(content);
    EXPECT_EQ(readFile(path_), content);
  }
}

TEST_F(FileVersions, HiddenOnesAreAccessibleToTheOwnerOnly) {
  saveTimes(5);
  ASSERT_FALSE(hiddenBeside(path_).empty());
  for (const fs::path& hidden : hiddenBeside(path_)) {
    EXPECT_EQ(fs::status(hidden).permissions(), fs::perms(0600));
  }
}

TEST_F(FileVersions, ChangedPermissionsAreKept) {
  saveTimes(5);
  ASSERT_EQ(::chmod(path_.c_str(), 0640), 0);
  for (int version = 0; version < 5; ++version) {
    save("new");
    EXPECT_EQ(fs::status(path_).permissions(), fs::perms(0640));
  }
}

TEST_F(FileVersions, AFileOfAnotherProgramIsReplacedLikeAnyOther) {
  saveTimes(5);
  fs::rename(folder_.write("restored", "from a backup"), path_);
  File file;
  ASSERT_EQ(file.open(wide(path_), kvpm::FileOpenRead), 0);
  EXPECT_EQ(read(file, 100), "from a backup");
  file.close();
  saveTimes(5);
  EXPECT_EQ(readFile(path_), "version 4");
}

TEST_F(FileVersions, HiddenOnesAreRemovedWhenTheFileIsDeleted) {
  saveTimes(5);
  EXPECT_TRUE(kvpm::PathTools::deleteFile(wide(path_)));
  EXPECT_EQ(filesIn(folder_), 0U);
  save("again");
  EXPECT_EQ(readFile(path_), "again");
}

TEST_F(FileVersions, HiddenOnesAreRemovedWhenTheFileIsMovedAway) {
  saveTimes(5);
  EXPECT_TRUE(kvpm::PathTools::moveFile(wide(path_), wide(folder_ / "aside")));
  EXPECT_EQ(filesIn(folder_), 1U);
  EXPECT_EQ(readFile(folder_ / "aside"), "version 4");
}

TEST_F(FileVersions, TheNextSaveRemovesHiddenOnesOfAFileDeletedByAnotherProgram) {
  saveTimes(5);
  fs::remove(path_);
  save("again");
  EXPECT_EQ(filesIn(folder_), 1U);
}

TEST_F(FileVersions, AnOrderlyEndOfTheProcessLeavesOnlyTheFile) {
  support::Process writer({FILE_REWRITER, path_.string(), "1", "20"});
  ASSERT_EQ(writer.wait(), 0);
  EXPECT_EQ(filesIn(folder_), 1U);
  EXPECT_FALSE(playerx::hasRecord(path_));
}

TEST_F(FileVersions, OneThatADestructorSavesAtTheEndOfTheProcessLeavesOnlyTheFile) {
  support::Process writer({FILE_REWRITER, path_.string(), "1", "20", "again"});
  ASSERT_EQ(writer.wait(), 0);
  EXPECT_EQ(readFile(path_), "0\nlines 1\n");
  EXPECT_EQ(filesIn(folder_), 1U);
  EXPECT_FALSE(playerx::hasRecord(path_));
}

TEST_F(FileVersions, AreReleasedOnlyOnceThePresentOneIsOnTheDisk) {
  playerx::FileVersions versions(path_);  // no other thread syncs these
  for (const char* content : {"1", "2"}) ASSERT_EQ(saveTo(versions, content), 0);
  EXPECT_FALSE(versions.release());
  EXPECT_EQ(filesIn(folder_), 2U);
  EXPECT_EQ(versions.sync(), 0);
  EXPECT_TRUE(versions.release());
  EXPECT_EQ(filesIn(folder_), 1U);
}

TEST_F(FileVersions, AreNotOnTheDiskWhenTheirFolderCannotBeSynced) {
  const fs::path data = folder_ / "data";
  fs::create_directory(data);
  playerx::FileVersions versions(data / "queue.xml");
  ASSERT_EQ(saveTo(versions, "1"), 0);
  fs::rename(data, folder_ / "moved");
  EXPECT_EQ(versions.sync(), ENOENT);
  fs::rename(folder_ / "moved", data);
  EXPECT_FALSE(versions.release());
}

TEST_F(FileVersions, AChildProcessDoesNotOverwriteThoseOfItsParent) {
  saveTimes(5);
  const pid_t child = ::fork();
  if (child == 0) {
    const int error = replace(path_, "of the child");
    ::_exit(error == 0 && readFile(path_) == "of the child" ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(readFile(path_), "of the child");
  saveTimes(3);
  EXPECT_EQ(readFile(path_), "version 2");
}

TEST_F(FileVersions, ManyFilesDoNotExhaustTheDescriptors) {
  for (int number = 0; number < 200; ++number) {
    ASSERT_EQ(replace(folder_ / std::to_string(number), "x"), 0);
    if (number % 10 == 0) playerx::flushFileSyncs();
  }
  const fs::directory_iterator open("/proc/self/fd");
  EXPECT_LT(std::distance(begin(open), end(open)), 100);
}

TEST_F(FileVersions, ASyncedOneIsKnownToBeOnTheDisk) {
  File file;
  ASSERT_EQ(file.open(wide(path_), kvpm::FileOpenWrite), 0);
  platform_test::write(file, "migrated");
  ASSERT_EQ(file.sync(), 0);
  ASSERT_EQ(file.close(), 0);
  const auto record = playerx::readRecord(playerx::openPlainFile(path_).get());
  ASSERT_TRUE(record);
  EXPECT_EQ(record->boot, playerx::VersionRecord::kOnDisk);
  EXPECT_EQ(record->flags, 0U) << "what it relies on is on the disk too";
}

}  // namespace
