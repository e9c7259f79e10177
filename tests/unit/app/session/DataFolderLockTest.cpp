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
                " cannot be written (Not a directory); choose another with --data.");
}

}  // namespace
}  // namespace playerx::session
