#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <filesystem>
#include <string>
#include <vector>

#include "kvpm/PathTools.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using kvpm::PathTools;
using support::TempDir;

struct Case {
  std::wstring path;
  std::wstring result;
};

TEST(PathTools, TheSeparatorIsOneCharacter) { EXPECT_EQ(PathTools::getWPathSeparator(), L"/"); }

TEST(PathTools, TheFileNameIsTheTextAfterTheLastSeparator) {
  const std::vector<Case> rows = {
      {L"/media/film.avi", L"film.avi"},
      {L"film.avi", L"film.avi"},
      {L"/film.avi", L"film.avi"},
      {L"/media/", L""},
      {L"/", L""},
      {L"", L""},
      {L"/media/a?b#c.avi", L"a?b#c.avi"},
      {L"/media/a\\b.avi", L"a\\b.avi"},
      {L"/media/http:/a.avi?x=1", L"a.avi?x=1"},
      {L"/media/c://a.avi?x=1", L"a.avi?x=1"},
      {L"/media/\x1F3AC.mkv", L"\x1F3AC.mkv"},
  };
  for (const Case& row : rows) EXPECT_EQ(PathTools::getFileName(row.path), row.result);
}

TEST(PathTools, TheFileNameOfAnAddressIsThatOfItsPath) {
  const std::vector<Case> rows = {
      {L"https://h/a/film.avi?x=1", L"film.avi"},
      {L"https://h/a/film.avi#t=1", L"film.avi"},
      {L"https://h/a/film.avi?u=/b/c.mkv", L"film.avi"},
      {L"https://h/a/film.avi#/c?d", L"film.avi"},
      {L"https://h/film.avi", L"film.avi"},
      {L"https://h/a/", L""},
      {L"https://h/?file=film.avi", L""},
      {L"https://film.avi", L""},
      {L"https://film.avi?x", L""},
      {L"https://", L""},
      {L"film.avi?u=https://h/b.mkv", L"film.avi"},
      {L"https://h/a%20b.avi", L"a%20b.avi"},
  };
  for (const Case& row : rows) EXPECT_EQ(PathTools::getFileName(row.path), row.result);
}

TEST(PathTools, TheExtensionBeginsAtTheLastDotOfTheFileName) {
  const std::vector<Case> rows = {
      {L"/media/film.avi", L".avi"},
      {L"film.part.MKV", L".MKV"},
      {L"/media.d/film", L""},
      {L"/media/.hidden", L".hidden"},
      {L"/media/film.", L"."},
      {L"/media.d/", L""},
      {L"", L""},
      {L"/media/film.avi?token=1", L".avi?token=1"},
      {L"https://h/film.avi?token=1.x", L".avi"},
      {L"https://h/film#.avi", L""},
      {L"https://example.com", L""},
      {L"https://example.com/", L""},
  };
  for (const Case& row : rows) EXPECT_EQ(PathTools::getExtension(row.path), row.result);
}

TEST(PathTools, TheDirectoryIsTheTextBeforeTheLastSeparator) {
  const std::vector<Case> rows = {
      {L"/media/film.avi", L"/media"},
      {L"media/film.avi", L"media"},
      {L"film.avi", L""},
      {L"/film.avi", L"/"},
      {L"/media/", L"/media"},
      {L"/", L"/"},
      {L"", L""},
  };
  for (const Case& row : rows) EXPECT_EQ(PathTools::getDirectory(row.path), row.result);
}

TEST(PathTools, FilesFoldersAndLinksExist) {
  const TempDir folder;
  folder.write("file", "x");
  fs::create_symlink("nowhere", folder / "dangling");
  EXPECT_TRUE(PathTools::fileExists((folder / "file").wstring()));
  EXPECT_TRUE(PathTools::fileExists(folder.path().wstring()));
  EXPECT_TRUE(PathTools::fileExists((folder / "dangling").wstring()));
}

TEST(PathTools, AMissingFileDoesNotExist) {
  const TempDir folder;
  folder.write("file", "x");
  const std::wstring file = (folder / "file").wstring();
  EXPECT_FALSE(PathTools::fileExists((folder / "other").wstring()));
  EXPECT_FALSE(PathTools::fileExists(file + L"/below"));
  EXPECT_FALSE(PathTools::fileExists(L""));
  EXPECT_FALSE(PathTools::fileExists(file + L'\0'));
}

TEST(PathTools, NamesAreUtf8) {
  const TempDir folder;
  folder.write("\xF0\x9F\x8E\xAC.avi", "four");
  EXPECT_EQ(PathTools::getFileSize(folder.path().wstring() + L"/\x1F3AC.avi"), 4U);
}

TEST(PathTools, TheSizeOfAFileIsItsBytes) {
  const TempDir folder;
  folder.write("file", std::string(70000, 'x'));
  folder.write("empty", "");
  fs::create_symlink("file", folder / "link");
  EXPECT_EQ(PathTools::getFileSize((folder / "file").wstring()), 70000U);
  EXPECT_EQ(PathTools::getFileSize((folder / "link").wstring()), 70000U);
  EXPECT_EQ(PathTools::getFileSize((folder / "empty").wstring()), 0U);
}

TEST(PathTools, TheVersionOfAFileChangesWithWhatItHolds) {
  const TempDir folder;
  const std::wstring file = (folder / "file").wstring();
  EXPECT_EQ(PathTools::getFileVersion(file), 0U);
  folder.write("file", "one");
  const std::uint64_t first = PathTools::getFileVersion(file);
  EXPECT_NE(first, 0U);
  EXPECT_EQ(PathTools::getFileVersion(file), first);
  folder.write("other", "one");
  fs::rename(folder / "other", folder / "file");
  const std::uint64_t second = PathTools::getFileVersion(file);
  EXPECT_NE(second, first);
  folder.write("file", "three");
  EXPECT_NE(PathTools::getFileVersion(file), second);
}

TEST(PathTools, TheSizeOfALargeFileIsNotTruncated) {
  const TempDir folder;
  folder.write("file", "");
  fs::resize_file(folder / "file", std::uint64_t{5} << 30U);
  EXPECT_EQ(PathTools::getFileSize((folder / "file").wstring()), std::uint64_t{5} << 30U);
}

TEST(PathTools, TheSizeOfAMissingFileIsZero) {
  const TempDir folder;
  folder.write("file", "x");
  fs::create_symlink("nowhere", folder / "dangling");
  const std::wstring root = folder.path().wstring();
  EXPECT_EQ(PathTools::getFileSize(root + L"/other"), 0U);
  EXPECT_EQ(PathTools::getFileSize(root + L"/file/below"), 0U);
  EXPECT_EQ(PathTools::getFileSize(root + L"/dangling"), 0U);
  EXPECT_EQ(PathTools::getFileSize(root + L"/" + std::wstring(300, L'n')), 0U);
  EXPECT_EQ(PathTools::getFileSize(root + L"/file" + L'\0'), 0U);
  EXPECT_EQ(PathTools::getFileSize(L""), 0U);
}

TEST(PathTools, AnUnknownSizeHasAllBitsSet) {
  const TempDir folder;
  fs::create_symlink("circle", folder / "circle");
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(PathTools::kUnknownSize, 0xFFFFFFFFFFFFFFFFU);
  EXPECT_EQ(PathTools::getFileSize(folder.path().wstring()), PathTools::kUnknownSize);
  EXPECT_EQ(PathTools::getFileSize((folder / "circle").wstring()), PathTools::kUnknownSize);
  EXPECT_EQ(PathTools::getFileSize((folder / "pipe").wstring()), PathTools::kUnknownSize);
}

TEST(PathTools, DeletesAFile) {
  const TempDir folder;
  const std::wstring file = folder.write("file", "x").wstring();
  EXPECT_TRUE(PathTools::deleteFile(file));
  EXPECT_FALSE(PathTools::fileExists(file));
  EXPECT_FALSE(PathTools::deleteFile(file));
}

TEST(PathTools, DeletesALinkAndNotItsTarget) {
  const TempDir folder;
  folder.write("file", "x");
  fs::create_symlink("file", folder / "link");
  EXPECT_TRUE(PathTools::deleteFile((folder / "link").wstring()));
  EXPECT_TRUE(fs::exists(folder / "file"));
}

TEST(PathTools, NeverDeletesAFolder) {
  const TempDir folder;
  fs::create_directory(folder / "sub");
  EXPECT_FALSE(PathTools::deleteFile((folder / "sub").wstring()));
  EXPECT_TRUE(fs::exists(folder / "sub"));
}

TEST(PathTools, DeletesNothingForAnInvalidPath) {
  const TempDir folder;
  const std::wstring file = folder.write("file", "x").wstring();
  EXPECT_FALSE(PathTools::deleteFile(file + L'\0' + L"x"));
  EXPECT_TRUE(PathTools::fileExists(file));
}

TEST(PathTools, MovesAFile) {
  const TempDir folder;
  const std::wstring from = folder.write("from", "film").wstring();
  const std::wstring to = (folder / "to").wstring();
  EXPECT_TRUE(PathTools::moveFile(from, to));
  EXPECT_FALSE(PathTools::fileExists(from));
  EXPECT_EQ(support::readFile(folder / "to"), "film");
}

TEST(PathTools, DoesNotMoveOntoAnother) {
  const TempDir folder;
  const std::wstring from = folder.write("from", "new").wstring();
  const std::wstring to = folder.write("to", "old").wstring();
  EXPECT_FALSE(PathTools::moveFile(from, to));
  EXPECT_EQ(support::readFile(folder / "from"), "new");
  EXPECT_EQ(support::readFile(folder / "to"), "old");
}

TEST(PathTools, MovesNothingForAnInvalidPath) {
  const TempDir folder;
  const std::wstring from = folder.write("from", "x").wstring();
  EXPECT_FALSE(PathTools::moveFile(from + L'\0', (folder / "to").wstring()));
  EXPECT_FALSE(PathTools::moveFile(from, (folder / "to").wstring() + L'\0'));
  EXPECT_TRUE(PathTools::fileExists(from));
}

// Free space changes while the test runs, by far less than a tenth of the file system.
void expectSpaceOf(const std::string& known, const std::wstring& asked) {
  struct statvfs state {};
  ASSERT_EQ(::statvfs(known.c_str(), &state), 0);
  const double expected = static_cast<double>(state.f_bavail) * static_cast<double>(state.f_frsize);
  const double whole = static_cast<double>(state.f_blocks) * static_cast<double>(state.f_frsize);
  EXPECT_NEAR(static_cast<double>(PathTools::getSpaceAvailable(asked)), expected, whole / 10);
}

TEST(PathTools, TheSpaceIsWhatTheUserMayWrite) {
  const TempDir folder;
  expectSpaceOf(folder.path().string(), folder.path().wstring());
}

TEST(PathTools, TheSpaceOfAMissingFolderIsThatOfItsNearestParent) {
  const TempDir folder;
  folder.write("file", "x");
  expectSpaceOf(folder.path().string(), folder.path().wstring() + L"/a/b/c");
  expectSpaceOf(folder.path().string(), folder.path().wstring() + L"/file/below");
  expectSpaceOf("/", L"/nowhere-at-all/a");
}

TEST(PathTools, TheSpaceOfARelativeFolderIsThatOfTheCurrentOne) {
  expectSpaceOf(".", L"nowhere-at-all");
  expectSpaceOf(".", L"");
}

TEST(PathTools, TheSpaceOfAnInvalidPathIsUnknown) {
  EXPECT_EQ(PathTools::getSpaceAvailable(std::wstring(L"/a\0b", 4)), PathTools::kUnknownSize);
}

}  // namespace
