#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "kvpm/File.h"
#include "playerx/platform/BlockHashes.h"
#include "playerx/platform/FileSync.h"
#include "playerx/platform/VersionRecord.h"
#include "tests/support/TempDir.h"
#include "tests/unit/platform/FileFixture.h"

namespace {

namespace fs = std::filesystem;
using kvpm::File;
using platform_test::filesIn;
using platform_test::replace;
using platform_test::wide;
using platform_test::write;
using support::readFile;
using support::TempDir;

TEST(FileReplacing, KeepsThePermissionsOfTheOldFile) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "old");
  for (const unsigned mode : {0600U, 0644U, 0660U}) {
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
    ASSERT_EQ(replace(path, "new"), 0);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(mode));
  }
}

TEST(FileReplacing, KeepsTheOwnerWhereAllowed) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "old");
  const bool givenAway = ::chown(path.c_str(), 12345, 23456) == 0;
  ASSERT_EQ(replace(path, "new"), 0);
  struct stat status {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, givenAway ? 12345U : ::geteuid());
  EXPECT_EQ(status.st_gid, givenAway ? 23456U : ::getegid());
}

TEST(FileReplacing, TheNewContentIsNeverMoreOpenThanTheOldFile) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "old");
  ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
  File file;
  ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenWrite), 0);
  for (const auto& entry : fs::directory_iterator(folder.path())) {
    EXPECT_EQ(entry.status().permissions(), fs::perms(0600));
  }
}

TEST(FileReplacing, ANewFileIsTheUsersAloneFromItsCreationOn) {
  const TempDir folder;
  File file;
  ASSERT_EQ(file.open((folder / "queue.xml").wstring(), kvpm::FileOpenWrite), 0);
  for (const auto& entry : fs::directory_iterator(folder.path())) {
    EXPECT_EQ(entry.status().permissions(), fs::perms(0600));
  }
  ASSERT_EQ(file.close(), 0);
  EXPECT_EQ(fs::status(folder / "queue.xml").permissions(), fs::perms(0600));
}

TEST(FileReplacing, ALinkIsKeptAndItsTargetReplaced) {
  const TempDir folder;
  folder.write("elsewhere/queue.xml", "old");
  fs::create_symlink("elsewhere/queue.xml", folder / "middle");
  fs::create_symlink((folder / "middle").string(), folder / "queue.xml");
  ASSERT_EQ(replace(folder / "queue.xml", "new"), 0);
  EXPECT_TRUE(fs::is_symlink(folder / "queue.xml"));
  EXPECT_TRUE(fs::is_symlink(folder / "middle"));
  EXPECT_EQ(readFile(folder / "elsewhere/queue.xml"), "new");
}

TEST(FileReplacing, ADanglingLinkLeadsToTheNewFile) {
  const TempDir folder;
  fs::create_symlink("real.xml", folder / "queue.xml");
  ASSERT_EQ(replace(folder / "queue.xml", "new"), 0);
  EXPECT_TRUE(fs::is_symlink(folder / "queue.xml"));
  EXPECT_EQ(readFile(folder / "real.xml"), "new");
}

TEST(FileReplacing, AcceptsTheLongestNamesAndAnyCharacters) {
  const TempDir folder;
  const fs::path longest = folder / std::string(255, 'n');
  EXPECT_EQ(replace(longest, "new"), 0);
  EXPECT_EQ(replace(longest, "newer"), 0);
  EXPECT_EQ(readFile(longest), "newer");
  EXPECT_EQ(replace(folder / "\xF0\x9F\x8E\xAC %s \\ \n", "new"), 0);
}

TEST(FileReplacing, AcceptsARelativeName) {
  const TempDir folder;
  const fs::path before = fs::current_path();
  fs::current_path(folder.path());
  EXPECT_EQ(replace("queue.xml", "new"), 0);
  fs::current_path(before);
  EXPECT_EQ(readFile(folder / "queue.xml"), "new");
}

TEST(FileReplacing, TheSyncRemovesWhatDeadWritersLeft) {
  const TempDir folder;
  folder.write(".queue.xml.0123456789abcdef.new", "half a queue");
  ASSERT_EQ(replace(folder / "queue.xml", "new"), 0);
  playerx::flushFileSyncs();
  EXPECT_EQ(filesIn(folder), 1U);
}

TEST(FileReplacing, AFileDeletedBeforeItsSyncDoesNoHarm) {
  {
    const TempDir folder;
    ASSERT_EQ(replace(folder / "queue.xml", "new"), 0);
  }
  playerx::flushFileSyncs();
}

/// As `replace`, of content that differs from the file's in bytes [begin, end) alone.
int replaceKnowing(const fs::path& path, const std::string& content, std::size_t begin,
                   std::size_t end) {
  kvpm::File file;
  if (const int error = file.open(wide(path), kvpm::FileOpenWrite); error != 0) return error;
  file.expectChange(begin, end);
  write(file, content);
  return file.close();
}

TEST(FileReplacing, AKnownChangeReachesEveryVersion) {
  const TempDir folder;
  const fs::path path = folder / "file";
  std::string content(10 * 4096 + 100, 'a');
  ASSERT_EQ(replace(path, content), 0);
  // Across the blocks, at both ends, and in the last block, which is not full.
  const std::pair<std::size_t, std::size_t> changes[] = {
      {5000, 5001}, {4095, 4097}, {0, 1}, {41059, 41060}, {8192, 12288}, {20000, 30000}, {7, 7}};
  for (int round = 0; round < 3; ++round) {
    for (const auto& [begin, end] : changes) {
      std::fill(content.begin() + std::ptrdiff_t(begin), content.begin() + std::ptrdiff_t(end),
                char('b' + round));
      ASSERT_EQ(replaceKnowing(path, content, begin, end), 0);
      ASSERT_EQ(readFile(path), content) << begin;
    }
  }
}

TEST(FileReplacing, ALongFileIsHashedAsItIsWritten) {
  const TempDir folder;
  const fs::path path = folder / "file";
  std::string content;
  for (int line = 0; content.size() < 3'000'000; ++line) content += std::to_string(line) + "\n";
  const auto expectSaved = [&] {
    ASSERT_EQ(replace(path, content), 0);
    ASSERT_EQ(readFile(path), content);
    const playerx::Descriptor file = playerx::openPlainFile(path);
    const auto record = playerx::readRecord(file.get());
    ASSERT_TRUE(record);
    int error = 0;
    EXPECT_EQ(playerx::hashOfFile(file.get(), record->seed, error), record->hash);
  };
  expectSaved();
  for (int round = 0; round < 3; ++round) {
    content.insert(0, "everything moves");
    expectSaved();
    content += "nothing does";
    expectSaved();
  }
  content.resize(1'500'000);
  expectSaved();
}

TEST(FileReplacing, WhatIsSaidOfAChangeDoesNotCountOnceTheFileIsAnother) {
  const TempDir folder;
  const fs::path path = folder / "file";
  std::string content(10 * 4096, 'a');
  for (const char* const written : {"another program", ""}) {
    ASSERT_EQ(replace(path, content), 0);
    folder.write("file", written);
    content[9000] = char(content[9000] + 1);
    ASSERT_EQ(replaceKnowing(path, content, 9000, 9001), 0);
    EXPECT_EQ(readFile(path), content);
  }
  content += "longer";
  ASSERT_EQ(replaceKnowing(path, content, 0, 1), 0);
  EXPECT_EQ(readFile(path), content);
}

TEST(FileReplacing, ReadersSeeOneCompleteVersionWhileWritersCompete) {
  const TempDir folder;
  const fs::path path = folder / "queue.xml";
  ASSERT_EQ(replace(path, std::string(1, 'a')), 0);
  std::atomic<int> writing{2};
  std::vector<std::thread> writers;
  for (const char letter : {'a', 'b'}) {
    writers.emplace_back([&, letter] {
      for (int version = 1; version <= 300; ++version) {
        EXPECT_EQ(replace(path, std::string(static_cast<std::size_t>(version) * 50, letter)), 0);
      }
      --writing;
    });
  }
  while (writing > 0) {
    const std::string content = readFile(path);
    ASSERT_FALSE(content.empty());
    ASSERT_EQ(content.find_first_not_of(content.front()), std::string::npos);
    ASSERT_TRUE(content.size() == 1 || content.size() % 50 == 0);
  }
  for (std::thread& writer : writers) writer.join();
}

}  // namespace
