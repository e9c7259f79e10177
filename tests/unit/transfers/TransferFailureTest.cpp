#include <gtest/gtest.h>

#include <map>
#include <string>

#include "playerx/transfers/TransferFailure.h"

namespace playerx::transfers {
namespace {

TEST(FailureWordTest, EachHasAWordOfItsOwn) {
  EXPECT_EQ(failureWord(TransferFailure::kNone), "none");
  EXPECT_EQ(failureWord(TransferFailure::kNoSuchHost), "no_such_host");
  EXPECT_EQ(failureWord(TransferFailure::kKeepsChanging), "keeps_changing");
  EXPECT_EQ(failureWord(TransferFailure::kMediaFolder), "media_folder");
  EXPECT_EQ(failureWord(TransferFailure::kInternal), "internal");
  std::map<std::string, int> words;
  for (int i = 0; i <= static_cast<int>(TransferFailure::kInternal); ++i) {
    ++words[failureWord(static_cast<TransferFailure>(i))];
  }
  EXPECT_EQ(words.size(), static_cast<std::size_t>(TransferFailure::kInternal) + 1);
}

TEST(FailureWordTest, AStatusIsNamedByItsNumber) {
  EXPECT_EQ(failureWord(failureOfStatus(404)), "http_404");
  EXPECT_EQ(statusOfFailure(failureOfStatus(404)), 404);
  EXPECT_EQ(statusOfFailure(TransferFailure::kRefused), 0);
}

TEST(FailureWordTest, UnknownNumbersAreFailuresOfThisSide) {
  EXPECT_EQ(failureWord(static_cast<TransferFailure>(99)), "internal");
  EXPECT_EQ(failureWord(static_cast<TransferFailure>(-1)), "internal");
}

}  // namespace
}  // namespace playerx::transfers
