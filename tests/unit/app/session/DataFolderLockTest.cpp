#include <gtest/gtest.h>

#include <optional>

#include "playerx/app/session/DataFolderLock.h"
#include "tests/support/TempDir.h"

namespace playerx::session {
namespace {

TEST(DataFolderLockTest, AMissingFolderIsMadeAndHeld) {
  const support::TempDir folder;
  const DataFolderLock lock(folder / "a/b");
  EXPECT_EQ(lock.problem(), "");
  EXPECT_TRUE(std::filesystem::is_directory(folder / "a/b"));
}

TEST(DataFolderLockTest, ASecondHolderIsTurnedAwayUntilTheFirstIsGone) {
  const support::TempDir folder;
  std::optional<DataFolderLock> first(std::in_place, folder.path());
  EXPECT_EQ(DataFolderLock(folder.path()).problem(),
            "Another player is using the data folder " + folder.path().string() +
                "; close it, or choose another folder with --data.");
  first.reset();
  EXPECT_EQ(DataFolderLock(folder.path()).problem(), "");
}

TEST(DataFolderLockTest, AFolderThatCannotBeMadeIsNamed) {
  const support::TempDir folder;
  const std::string below = folder.write("file", "x") / "below";
  EXPECT_EQ(DataFolderLock(below).problem(),
            "The data folder " + below +
                " cannot be written (player.lock: Not a directory); choose another with --data.");
}

TEST(DataFolderLockTest, WhatStandsInThePlaceOfTheLockIsNamed) {
  const support::TempDir folder;
  const std::filesystem::path file = folder / "player.lock";
  const std::string begin = "The data folder " + folder.path().string() + " cannot be written (";
  const std::string end = "); choose another with --data.";
  std::filesystem::create_directory(file);
  EXPECT_EQ(DataFolderLock(folder.path()).problem(), begin + "player.lock: Is a directory" + end);
  std::filesystem::remove(file);
  std::filesystem::create_symlink("elsewhere", file);
  EXPECT_EQ(DataFolderLock(folder.path()).problem(),
            begin + "player.lock: Too many levels of symbolic links" + end);
}

}  // namespace
}  // namespace playerx::session
