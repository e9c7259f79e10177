#include <gtest/gtest.h>

#include <cerrno>

#include "playerx/platform/NativePath.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using playerx::makePrivateFolders;

TEST(PrivateFolders, NewOnesAreTheUsersAlone) {
  const support::TempDir folder;
  EXPECT_EQ(makePrivateFolders(folder / "a/b"), 0);
  EXPECT_EQ(fs::status(folder / "a").permissions(), fs::perms::owner_all);
  EXPECT_EQ(fs::status(folder / "a/b").permissions(), fs::perms::owner_all);
}

TEST(PrivateFolders, ThoseThatAreThereStayAsTheyAre) {
  const support::TempDir folder;
  fs::create_directory(folder / "a");
  fs::permissions(folder / "a", fs::perms(0755));
  EXPECT_EQ(makePrivateFolders(folder / "a/"), 0);
  EXPECT_EQ(fs::status(folder / "a").permissions(), fs::perms(0755));
}

TEST(PrivateFolders, AFileInTheWayIsAnError) {
  const support::TempDir folder;
  folder.write("a", "");
  EXPECT_EQ(makePrivateFolders(folder / "a"), ENOTDIR);
  EXPECT_EQ(makePrivateFolders(folder / "a/b"), ENOTDIR);
}

}  // namespace
