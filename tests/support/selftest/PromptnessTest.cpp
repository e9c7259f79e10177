#include <gtest/gtest.h>

#include <vector>

#include "tests/support/Promptness.h"

namespace support {
namespace {

using std::chrono::milliseconds;

TEST(BestTime, IsThatOfTheFirstAttemptBelowTheLimit) {
  const std::vector<milliseconds> times{milliseconds(300), milliseconds(250), milliseconds(249)};
  std::size_t tried = 0;
  EXPECT_EQ(bestTime([&] { return times.at(tried++); }), milliseconds(249));
}

TEST(BestTime, IsTheShortestOfFiveWhenAllAreTooLong) {
  int tried = 0;
  EXPECT_EQ(bestTime([&] { return milliseconds(++tried == 3 ? 400 : 500); }), milliseconds(400));
  EXPECT_EQ(tried, 5);
}

}  // namespace
}  // namespace support
