#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

#include "playerx/transfers/PartFile.h"
#include "tests/support/TempDir.h"
#include "tests/unit/transfers/FilmServer.h"

namespace playerx::transfers {
namespace {

namespace fs = std::filesystem;

std::uint64_t bytesOnDisk(const fs::path& path) {
  struct stat status {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0);
  return static_cast<std::uint64_t>(status.st_blocks) * 512;
}

class PartFileTest : public ::testing::Test {
 protected:
  PartFileTest() : file_(Descriptor(::open(path_.c_str(), O_RDWR | O_CREAT, 0600)), 0) {}

  support::TempDir folder_;
  const fs::path path_ = folder_ / "bytes";
  PartFile file_;
};

TEST_F(PartFileTest, WhatIsAppendedInAnyPiecesIsThere) {
  const std::string content = filmBytes(1'000'000);
  for (std::size_t at = 0, piece = 1; at < content.size(); at += piece, piece = piece * 3 + 1) {
    piece = std::min(piece, content.size() - at);
    EXPECT_EQ(file_.append(content.data() + at, piece), 0);
    EXPECT_EQ(file_.size(), at + piece);
  }
  EXPECT_EQ(file_.flush(), 0);
  EXPECT_EQ(support::readFile(path_), content);
}

TEST_F(PartFileTest, ReadsBackWhatStillWaitsInMemory) {
  file_.append("0123456789", 10);
  char bytes[4];
  EXPECT_TRUE(file_.read(3, bytes, 4));
  EXPECT_EQ(std::string(bytes, 4), "3456");
  EXPECT_FALSE(file_.read(7, bytes, 4));
  EXPECT_FALSE(file_.read(11, bytes, 0));
}

TEST_F(PartFileTest, SpaceIsReservedWithoutChangingTheSizeAndGivenBack) {
  file_.append("film", 4);
  ASSERT_EQ(file_.reserve(10'000'000), 0);
  EXPECT_EQ(fs::file_size(path_), 4u);
  EXPECT_GE(bytesOnDisk(path_), 10'000'000u);
  file_.releaseReserve();
  EXPECT_EQ(fs::file_size(path_), 4u);
  EXPECT_LT(bytesOnDisk(path_), 100'000u);
  EXPECT_EQ(support::readFile(path_), "film");
}

TEST_F(PartFileTest, ASmallerTotalReservesNothing) {
  file_.append("film", 4);
  EXPECT_EQ(file_.reserve(4), 0);
  EXPECT_EQ(file_.reserve(0), 0);
}

TEST_F(PartFileTest, MoreThanADiskHoldsIsNoSpace) {
  EXPECT_NE(file_.reserve(std::uint64_t{1} << 62U), 0);
  EXPECT_EQ(file_.reserve(UINT64_MAX), EFBIG);
  EXPECT_LT(bytesOnDisk(path_), 100'000u);
}

TEST_F(PartFileTest, ACutDropsWhatWaitsAndWhatIsReserved) {
  file_.append("film", 4);
  file_.reserve(10'000'000);
  EXPECT_EQ(file_.cut(2), 0);
  EXPECT_EQ(file_.size(), 2u);
  file_.append("nd", 2);
  file_.flush();
  EXPECT_EQ(support::readFile(path_), "find");
  EXPECT_LT(bytesOnDisk(path_), 100'000u);
}

TEST_F(PartFileTest, ASmallFileIsNotWorthReserving) {
  EXPECT_EQ(file_.reserve(kLargeFilm - 1), 0);
  EXPECT_EQ(bytesOnDisk(path_), 0u);
}

}  // namespace
}  // namespace playerx::transfers
