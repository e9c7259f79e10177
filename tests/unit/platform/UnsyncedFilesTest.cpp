#include <gtest/gtest.h>

#include <filesystem>

#include "playerx/platform/FileSync.h"
#include "playerx/platform/UnsyncedFiles.h"
#include "tests/support/TempDir.h"

namespace playerx {
namespace {

TEST(UnsyncedFilesTest, AFileIsNotChanged) {
  const support::TempDir folder;
  const auto film = folder.write("film.avi", "film");
  addUnsyncedFile(film);
  syncUnsyncedFiles();
  EXPECT_EQ(support::readFile(film), "film");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(UnsyncedFilesTest, ANameIsOnTheDiskOnceItIsSynced) {
  const support::TempDir folder;
  syncUnsyncedFiles();
  EXPECT_TRUE(areAllFilesOnDisk());
  addUnsyncedName(folder.write("film.avi", "film"));
  EXPECT_FALSE(areAllFilesOnDisk());
  syncUnsyncedFiles();
  EXPECT_TRUE(areAllFilesOnDisk());
}

TEST(UnsyncedFilesTest, AMissingFileDoesNoHarm) {
  const support::TempDir folder;
  syncFileSoon(folder / "missing/film.avi");
  addUnsyncedFile(folder / "film.avi");
  syncUnsyncedFiles();
  flushFileSyncs();
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

}  // namespace
}  // namespace playerx
