#include <gtest/gtest.h>

#include "download/Placement.h"
#include "kvpm/PathTools.h"

namespace download {
namespace {

constexpr std::uint64_t kMost = ~std::uint64_t{0};

TEST(Placement, NeedsTheFileTwiceAndOneByteForEach7168) {
  const struct {
    std::uint64_t total;
    std::uint64_t needed;
  } table[] = {{0, 0},
               {1, 2},
               {7167, 14334},
               {7168, 14337},
               {14335, 28671},
               {14336, 28674},
               {1'000'000'000, 2'000'139'508},
               {4611686018427387904, 9224015408230114450u}};
  for (const auto& row : table) EXPECT_EQ(spaceForFreshDownload(row.total), row.needed);
}

TEST(Placement, NeedsMoreThanThereIsForAnAbsurdSize) {
  EXPECT_EQ(spaceForFreshDownload(kMost), kMost);
  EXPECT_EQ(spaceForFreshDownload(kMost / 2 + 1), kMost);
}

TEST(Placement, MissesWhatIsNotThereYet) {
  EXPECT_EQ(missingBytes(10, 0), 10u);
  EXPECT_EQ(missingBytes(10, 9), 1u);
  EXPECT_EQ(missingBytes(10, 10), 0u);
  EXPECT_EQ(missingBytes(10, 11), 0u);
}

TEST(Placement, MissesEverythingOfAFileOfUnknownSize) {
  EXPECT_EQ(missingBytes(10, kvpm::PathTools::kUnknownSize), 10u);
  EXPECT_FALSE(isComplete(10, kvpm::PathTools::kUnknownSize));
}

TEST(Placement, CallsAFileCompleteFromTheTotalSizeOn) {
  EXPECT_FALSE(isComplete(10, 9));
  EXPECT_TRUE(isComplete(10, 10));
  EXPECT_TRUE(isComplete(10, 11));
}

}  // namespace
}  // namespace download
