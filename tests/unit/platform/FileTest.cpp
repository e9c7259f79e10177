#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "kvpm/File.h"
#include "kvpm/StringTools.h"
#include "playerx/platform/FileSync.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using kvpm::File;
using support::readFile;
using support::TempDir;

std::int64_t write(File& file, const std::string& text) {
  return file.write(text.data(), text.size());
}

int replace(const fs::path& path, const std::string& content) {
  File file;
  const std::wstring name = kvpm::StringTools::stringToWString(path.string());
  if (const int error = file.open(name, kvpm::FileOpenWrite); error != 0) return error;
  write(file, content);
  return file.close();
}

std::string read(File& file, std::uint64_t length) {
  std::string text(length, '\0');
  const std::int64_t got = file.read(text.data(), length);
  EXPECT_GE(got, 0);
  text.resize(static_cast<std::size_t>(got));
  return text;
}

std::size_t filesIn(const TempDir& folder) {
  const fs::directory_iterator all(folder.path());
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

// Files of this process cannot grow beyond a size while this lives, as on a full disk.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    before_ = std::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &limit_);
    const struct rlimit smaller = {bytes, limit_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &smaller);
  }
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &limit_);
    std::signal(SIGXFSZ, before_);
  }

 private:
  struct rlimit limit_ {};
  void (*before_)(int) = nullptr;
};

TEST(FileReading, YieldsTheContentFromThePresentPosition) {
  const TempDir folder;
  File file;
  ASSERT_EQ(file.open(folder.write("film", "abcdef").wstring(), kvpm::FileOpenRead), 0);
  EXPECT_EQ(file.getTotalSize(), 6);
  EXPECT_EQ(read(file, 4), "abcd");
  EXPECT_EQ(read(file, 4), "ef");
  EXPECT_EQ(read(file, 4), "");
  EXPECT_EQ(file.close(), 0);
}

TEST(FileReading, AnEmptyFileHasNoBytes) {
  const TempDir folder;
  File file;
  ASSERT_EQ(file.open(folder.write("film", "").wstring(), kvpm::FileOpenRead), 0);
  EXPECT_EQ(file.getTotalSize(), 0);
  EXPECT_EQ(read(file, 4), "");
}

TEST(FileReading, OpeningSaysWhyItFailed) {
  const TempDir folder;
  const fs::path plain = folder.write("file", "x");
  fs::create_symlink("circle", folder / "circle");
  File file;
  EXPECT_EQ(file.open((folder / "none").wstring(), kvpm::FileOpenRead), ENOENT);
  EXPECT_EQ(file.open((plain / "below").wstring(), kvpm::FileOpenRead), ENOTDIR);
  EXPECT_EQ(file.open(folder.path().wstring(), kvpm::FileOpenRead), EISDIR);
  EXPECT_EQ(file.open((folder / "circle").wstring(), kvpm::FileOpenRead), ELOOP);
  EXPECT_EQ(file.open(plain.wstring() + L'\0' + L"x", kvpm::FileOpenRead), EINVAL);
  EXPECT_EQ(file.open(L"", kvpm::FileOpenRead), ENOENT);
  EXPECT_EQ(file.getTotalSize(), -1);
}

TEST(FileReading, CannotWrite) {
  const TempDir folder;
  File file;
  ASSERT_EQ(file.open(folder.write("film", "abc").wstring(), kvpm::FileOpenRead), 0);
  EXPECT_EQ(write(file, "x"), -1);
  EXPECT_EQ(file.close(), 0);
  EXPECT_EQ(readFile(folder / "film"), "abc");
}

TEST(FileReading, APipeWithoutAWriterDoesNotHoldItUp) {
  const TempDir folder;
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  File file;
  ASSERT_EQ(file.open((folder / "pipe").wstring(), kvpm::FileOpenRead), 0);
  EXPECT_EQ(file.getTotalSize(), -1);
  EXPECT_EQ(read(file, 4), "");
}

TEST(FileReading, AnOpenedFileKeepsItsContentWhenItIsReplaced) {
  const TempDir folder;
  const fs::path path = folder.write("film", "old");
  File file;
  ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenRead), 0);
  ASSERT_EQ(replace(path, "newer"), 0);
  EXPECT_EQ(read(file, 10), "old");
}

TEST(File, WithoutAnOpenFileNothingWorks) {
  File file;
  std::array<char, 4> bytes{};
  EXPECT_EQ(file.getTotalSize(), -1);
  EXPECT_EQ(file.read(bytes.data(), bytes.size()), -1);
  EXPECT_EQ(file.write(bytes.data(), bytes.size()), -1);
  EXPECT_EQ(file.close(), 0);
}

TEST(File, OpeningClosesTheOneBefore) {
  const TempDir folder;
  File file;
  ASSERT_EQ(file.open(folder.write("a", "first").wstring(), kvpm::FileOpenRead), 0);
  ASSERT_EQ(file.open(folder.write("b", "second").wstring(), kvpm::FileOpenRead), 0);
  EXPECT_EQ(read(file, 10), "second");
  EXPECT_NE(file.open((folder / "none").wstring(), kvpm::FileOpenRead), 0);
  EXPECT_EQ(file.getTotalSize(), -1);
}

TEST(FileWriting, PutsTheContentUnderItsNameAtClose) {
  const TempDir folder;
  const fs::path path = folder / "queue.xml";
  File file;
  ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenWrite), 0);
  EXPECT_EQ(file.getTotalSize(), 0);
  EXPECT_EQ(write(file, "abc"), 3);
  EXPECT_EQ(write(file, "de"), 2);
  EXPECT_EQ(file.getTotalSize(), 5);
  EXPECT_FALSE(fs::exists(path));
  EXPECT_EQ(file.close(), 0);
  EXPECT_EQ(readFile(path), "abcde");
  EXPECT_EQ(filesIn(folder), 1U);
}

TEST(FileWriting, ReplacesALongerContentWhole) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "a long old content");
  ASSERT_EQ(replace(path, "new"), 0);
  EXPECT_EQ(readFile(path), "new");
}

TEST(FileWriting, NothingWrittenIsAnEmptyFile) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "old");
  ASSERT_EQ(replace(path, ""), 0);
  EXPECT_EQ(readFile(path), "");
}

TEST(FileWriting, TheOldContentIsThereUntilClose) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "old");
  File file;
  ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenWrite), 0);
  write(file, "new");
  EXPECT_EQ(readFile(path), "old");
  ASSERT_EQ(file.close(), 0);
  EXPECT_EQ(readFile(path), "new");
}

TEST(FileWriting, IsDroppedWithoutClose) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "old");
  {
    File file;
    ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenWrite), 0);
    write(file, "new");
  }
  EXPECT_EQ(readFile(path), "old");
  EXPECT_EQ(filesIn(folder), 1U);
}

TEST(FileWriting, IsDroppedByAnotherOpen) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "old");
  File file;
  ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenWrite), 0);
  write(file, "new");
  ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenRead), 0);
  EXPECT_EQ(read(file, 10), "old");
  EXPECT_EQ(filesIn(folder), 1U);
}

TEST(FileWriting, CannotRead) {
  const TempDir folder;
  File file;
  ASSERT_EQ(file.open((folder / "queue.xml").wstring(), kvpm::FileOpenWrite), 0);
  char byte = 0;
  EXPECT_EQ(file.read(&byte, 1), -1);
}

TEST(FileWriting, ASecondCloseDoesNothing) {
  const TempDir folder;
  const fs::path path = folder / "queue.xml";
  File file;
  ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenWrite), 0);
  ASSERT_EQ(file.close(), 0);
  fs::remove(path);
  EXPECT_EQ(file.close(), 0);
  EXPECT_FALSE(fs::exists(path));
}

TEST(FileWriting, OpeningSaysWhyItFailed) {
  const TempDir folder;
  const fs::path plain = folder.write("file", "x");
  fs::create_symlink("circle", folder / "circle");
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  File file;
  EXPECT_EQ(file.open((folder / "none" / "file").wstring(), kvpm::FileOpenWrite), ENOENT);
  EXPECT_EQ(file.open((plain / "below").wstring(), kvpm::FileOpenWrite), ENOTDIR);
  EXPECT_EQ(file.open(folder.path().wstring(), kvpm::FileOpenWrite), EISDIR);
  EXPECT_EQ(file.open((folder / "circle").wstring(), kvpm::FileOpenWrite), ELOOP);
  EXPECT_EQ(file.open((folder / "pipe").wstring(), kvpm::FileOpenWrite), EINVAL);
  EXPECT_EQ(file.open(plain.wstring() + L'\0' + L"x", kvpm::FileOpenWrite), EINVAL);
  EXPECT_EQ(file.open((folder / std::string(256, 'n')).wstring(), kvpm::FileOpenWrite),
            ENAMETOOLONG);
  EXPECT_EQ(filesIn(folder), 3U);
}

TEST(FileWriting, AShortWriteKeepsTheOldFile) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "old");
  File file;
  ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenWrite), 0);
  {
    const FileSizeLimit full(1000);
    EXPECT_EQ(write(file, std::string(4000, 'x')), 1000);
  }
  EXPECT_EQ(write(file, "y"), -1);
  EXPECT_EQ(file.close(), EFBIG);
  EXPECT_EQ(readFile(path), "old");
  EXPECT_EQ(filesIn(folder), 1U);
}

TEST(FileWriting, AFailedWriteKeepsTheOldFile) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "old");
  File file;
  ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenWrite), 0);
  {
    const FileSizeLimit full(0);
    EXPECT_EQ(write(file, "new"), -1);
  }
  EXPECT_EQ(file.close(), EFBIG);
  EXPECT_EQ(readFile(path), "old");
  EXPECT_EQ(replace(path, "again"), 0);
  EXPECT_EQ(readFile(path), "again");
}

TEST(FileWriting, ACloseThatFailsKeepsTheOldFile) {
  const TempDir folder;
  const fs::path path = folder / "queue.xml";
  File file;
  ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenWrite), 0);
  write(file, "new");
  fs::create_directory(path);  // in its place meanwhile
  EXPECT_EQ(file.close(), EISDIR);
  EXPECT_TRUE(fs::is_directory(path));
  EXPECT_EQ(filesIn(folder), 1U);
}

TEST(FileWriting, KeepsThePermissionsOfTheOldFile) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "old");
  for (const unsigned mode : {0600U, 0644U, 0660U}) {
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
    ASSERT_EQ(replace(path, "new"), 0);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(mode));
  }
}

TEST(FileWriting, KeepsTheOwnerWhereThatIsAllowed) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "old");
  const bool givenAway = ::chown(path.c_str(), 12345, 23456) == 0;
  ASSERT_EQ(replace(path, "new"), 0);
  struct stat status {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, givenAway ? 12345U : ::geteuid());
  EXPECT_EQ(status.st_gid, givenAway ? 23456U : ::getegid());
}

TEST(FileWriting, TheNewContentIsNeverMoreOpenThanTheOldFile) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "old");
  ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
  File file;
  ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenWrite), 0);
  for (const auto& entry : fs::directory_iterator(folder.path())) {
    EXPECT_EQ(entry.status().permissions(), fs::perms(0600));
  }
}

TEST(FileWriting, ANewFileTakesTheUsersMask) {
  const TempDir folder;
  const mode_t before = ::umask(0027);
  EXPECT_EQ(replace(folder / "queue.xml", "new"), 0);
  ::umask(before);
  EXPECT_EQ(fs::status(folder / "queue.xml").permissions(), fs::perms(0640));
}

TEST(FileWriting, ALinkIsKeptAndItsTargetReplaced) {
  const TempDir folder;
  folder.write("elsewhere/queue.xml", "old");
  fs::create_symlink("elsewhere/queue.xml", folder / "middle");
  fs::create_symlink((folder / "middle").string(), folder / "queue.xml");
  ASSERT_EQ(replace(folder / "queue.xml", "new"), 0);
  EXPECT_TRUE(fs::is_symlink(folder / "queue.xml"));
  EXPECT_TRUE(fs::is_symlink(folder / "middle"));
  EXPECT_EQ(readFile(folder / "elsewhere/queue.xml"), "new");
}

TEST(FileWriting, ALinkThatLedNowhereLeadsToTheNewFile) {
  const TempDir folder;
  fs::create_symlink("real.xml", folder / "queue.xml");
  ASSERT_EQ(replace(folder / "queue.xml", "new"), 0);
  EXPECT_TRUE(fs::is_symlink(folder / "queue.xml"));
  EXPECT_EQ(readFile(folder / "real.xml"), "new");
}

TEST(FileWriting, TakesTheLongestNamesAndAnyCharacters) {
  const TempDir folder;
  const fs::path longest = folder / std::string(255, 'n');
  EXPECT_EQ(replace(longest, "new"), 0);
  EXPECT_EQ(replace(longest, "newer"), 0);
  EXPECT_EQ(readFile(longest), "newer");
  EXPECT_EQ(replace(folder / "\xF0\x9F\x8E\xAC %s \\ \n", "new"), 0);
}

TEST(FileWriting, TakesANameInThePresentFolder) {
  const TempDir folder;
  const fs::path before = fs::current_path();
  fs::current_path(folder.path());
  EXPECT_EQ(replace("queue.xml", "new"), 0);
  fs::current_path(before);
  EXPECT_EQ(readFile(folder / "queue.xml"), "new");
}

TEST(FileWriting, WhatDeadWritersLeftIsTidiedUpWithTheSync) {
  const TempDir folder;
  folder.write(".queue.xml.0123456789abcdef.new", "half a queue");
  ASSERT_EQ(replace(folder / "queue.xml", "new"), 0);
  playerx::flushFileSyncs();
  EXPECT_EQ(filesIn(folder), 1U);
}

TEST(FileWriting, AFileThatIsGoneBeforeItsSyncHarmsNothing) {
  {
    const TempDir folder;
    ASSERT_EQ(replace(folder / "queue.xml", "new"), 0);
  }
  playerx::flushFileSyncs();
}

TEST(FileWriting, ReadersSeeOneWholeVersionWhileWritersCompete) {
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
  EXPECT_EQ(filesIn(folder), 1U);
}

}  // namespace
