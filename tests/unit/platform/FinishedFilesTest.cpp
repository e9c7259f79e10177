#include <gtest/gtest.h>

#include <filesystem>

#include "playerx/platform/FileSync.h"
#include "playerx/platform/FinishedFiles.h"
#include "tests/support/TempDir.h"

namespace playerx {
namespace {

TEST(FinishedFilesTest, AFileIsNotChanged) {
  const support::TempDir folder;
  const auto film = folder.write("film.avi", "film");
  addFinishedFile(film);
  syncFinishedFiles();
  EXPECT_EQ(support::readFile(film), "film");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(FinishedFilesTest, AMissingFileDoesNoHarm) {
  const support::TempDir folder;
  syncFinishedSoon(folder / "missing/film.avi");
  addFinishedFile(folder / "film.avi");
  syncFinishedFiles();
  flushFileSyncs();
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

}  // namespace
}  // namespace playerx
