#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "playerx/platform/SmallFile.h"
#include "tests/support/TempDir.h"

namespace playerx {
namespace {

namespace fs = std::filesystem;

class SmallFileTest : public testing::Test {
 protected:
  fs::perms rights() const { return fs::status(file_).permissions(); }

  static constexpr fs::perms kOwnerOnly = fs::perms(0600);

  const support::TempDir folder_;
  const fs::path file_ = folder_ / "options.jsonl";
};

TEST_F(SmallFileTest, WhatIsAppendedStandsBehindWhatWasThere) {
  ASSERT_EQ(appendToSmallFile(file_, "one"), 0);
  ASSERT_EQ(appendToSmallFile(file_, "two"), 0);
  EXPECT_EQ(readSmallFile(file_), "onetwo");
  EXPECT_EQ(rights(), kOwnerOnly);
}

TEST_F(SmallFileTest, AFileThatOthersReadIsTheOwnersBeforeItIsAppendedTo) {
  support::writeFile(file_, "one");
  fs::permissions(file_, fs::perms(0644));
  ASSERT_EQ(appendToSmallFile(file_, "two"), 0);
  EXPECT_EQ(rights(), kOwnerOnly);
}

TEST_F(SmallFileTest, NothingIsAppendedToTheTargetOfALink) {
  const fs::path target = folder_.write("target", "one");
  fs::create_symlink(target, file_);
  ASSERT_EQ(appendToSmallFile(file_, "secret"), 0);
  EXPECT_EQ(support::readFile(target), "one");
  EXPECT_FALSE(fs::is_symlink(file_));
  EXPECT_EQ(readSmallFile(file_), "secret");
}

TEST_F(SmallFileTest, NothingWaitsForTheOtherEndOfAPipe) {
  ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
  EXPECT_NE(appendToSmallFile(file_, "one"), 0);
  EXPECT_EQ(readSmallFile(file_), "");
}

}  // namespace
}  // namespace playerx
