#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <filesystem>

#include "kvpm/File.h"
#include "tests/support/TempDir.h"
#include "tests/unit/platform/FileFixture.h"

namespace {

namespace fs = std::filesystem;
using kvpm::File;
using platform_test::read;
using platform_test::replace;
using platform_test::write;
using support::readFile;
using support::TempDir;

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

TEST(FileReading, AFailedOpenReturnsTheReason) {
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

TEST(FileReading, APipeWithoutAWriterDoesNotBlockIt) {
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

TEST(File, EveryOperationFailsWithoutAnOpenFile) {
  File file;
  std::array<char, 4> bytes{};
  EXPECT_EQ(file.getTotalSize(), -1);
  EXPECT_EQ(file.read(bytes.data(), bytes.size()), -1);
  EXPECT_EQ(file.write(bytes.data(), bytes.size()), -1);
  EXPECT_EQ(file.close(), 0);
}

TEST(File, OpeningClosesTheFormerFile) {
  const TempDir folder;
  File file;
  ASSERT_EQ(file.open(folder.write("a", "first").wstring(), kvpm::FileOpenRead), 0);
  ASSERT_EQ(file.open(folder.write("b", "second").wstring(), kvpm::FileOpenRead), 0);
  EXPECT_EQ(read(file, 10), "second");
  EXPECT_NE(file.open((folder / "none").wstring(), kvpm::FileOpenRead), 0);
  EXPECT_EQ(file.getTotalSize(), -1);
}

}  // namespace
