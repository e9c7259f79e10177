#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "kvpm/File.h"
#include "playerx/platform/FileSync.h"
#include "tests/support/TempDir.h"
#include "tests/unit/platform/FileFixture.h"

namespace {

namespace fs = std::filesystem;
using kvpm::File;
using platform_test::filesIn;
using platform_test::FileSizeLimit;
using platform_test::read;
using platform_test::replace;
using platform_test::write;
using support::readFile;
using support::TempDir;

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

TEST(FileWriting, WithoutANameCreatesNothing) {
  const TempDir folder;
  const fs::path before = fs::current_path();
  fs::current_path(folder.path());
  File file;
  EXPECT_EQ(file.open(L"", kvpm::FileOpenWrite), ENOENT);
  EXPECT_EQ(file.open(L"", kvpm::FileOpenRead), ENOENT);
  EXPECT_TRUE(fs::is_empty(folder.path()));
  fs::current_path(before);
}

TEST(FileWriting, RemembersWhyTheLastContentCouldNotBeWritten) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "old");
  {
    const FileSizeLimit full(1000);
    File file;
    ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenWrite), 0);
    EXPECT_LT(write(file, std::string(2000, 'x')), 2000);
  }
  EXPECT_EQ(playerx::lastSaveError(path), EFBIG);
  ASSERT_EQ(replace(path, "new"), 0);
  EXPECT_EQ(playerx::lastSaveError(path), 0);
}

TEST(FileWriting, ReplacesALongerContentCompletely) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "a long old content");
  ASSERT_EQ(replace(path, "new"), 0);
  EXPECT_EQ(readFile(path), "new");
}

TEST(FileWriting, WithoutAWriteTheFileIsEmpty) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "old");
  ASSERT_EQ(replace(path, ""), 0);
  EXPECT_EQ(readFile(path), "");
}

TEST(FileWriting, TheOldContentStaysUntilClose) {
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

TEST(FileWriting, SyncedContentAppearsAtCloseLikeAnyOther) {
  const TempDir folder;
  const fs::path path = folder.write("queue.xml", "old");
  File file;
  ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenWrite), 0);
  write(file, "new");
  EXPECT_EQ(file.sync(), 0);
  EXPECT_EQ(readFile(path), "old");
  EXPECT_EQ(file.close(), 0);
  EXPECT_EQ(readFile(path), "new");
}

TEST(FileWriting, OnlyAFileOpenForWritingIsSynced) {
  const TempDir folder;
  File file;
  EXPECT_EQ(file.sync(), EBADF);
  ASSERT_EQ(file.open(folder.write("film", "abc").wstring(), kvpm::FileOpenRead), 0);
  EXPECT_EQ(file.sync(), EBADF);
}

TEST(FileWriting, OfAFileThatIsNotOpenNoChangeIsExpected) {
  File file;
  file.expectChange(0, 1);
  EXPECT_EQ(file.getTotalSize(), -1);
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

TEST(FileWriting, AFailedOpenReturnsTheReason) {
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

TEST(FileWriting, AFailedCloseKeepsTheOldFile) {
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

}  // namespace
