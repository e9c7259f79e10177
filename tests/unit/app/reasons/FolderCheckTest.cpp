#include <gtest/gtest.h>

#include "playerx/app/reasons/FolderCheck.h"
#include "tests/support/TempDir.h"

namespace playerx {
namespace {

TEST(FolderCheckTest, AFolderThatIsThereOrCanBeMadeHoldsFiles) {
  const support::TempDir folder;
  EXPECT_TRUE(canHoldFiles(folder / ""));
  EXPECT_TRUE(canHoldFiles(folder / "a/b/c"));
}

TEST(FolderCheckTest, NothingIsKeptBelowAFileOrWithTheKernel) {
  const support::TempDir folder;
  const std::filesystem::path file = folder.write("file", "x");
  EXPECT_FALSE(canHoldFiles(file));
  EXPECT_FALSE(canHoldFiles(file / "below"));
  EXPECT_FALSE(canHoldFiles("/proc/films"));
}

}  // namespace
}  // namespace playerx
