#include <gtest/gtest.h>

#include <cerrno>

#include "playerx/transfers/SystemError.h"

namespace playerx::transfers {
namespace {

using enum TransferFailure;

TEST(SystemErrorTest, AFullDiskIsThatOfTheFolderThatWasWrittenTo) {
  for (const int error : {ENOSPC, EDQUOT, EFBIG}) {
    EXPECT_EQ(failureOfError(error, kWriteFailed), kNoSpace);
    EXPECT_EQ(failureOfError(error, kTempFolder), kNoSpace);
    EXPECT_EQ(failureOfError(error, kMediaFolder), kNoSpaceForFilm);
  }
}

TEST(SystemErrorTest, EveryOtherErrorIsWhatTheCallerSays) {
  EXPECT_EQ(failureOfError(EACCES, kMediaFolder), kMediaFolder);
  EXPECT_EQ(failureOfError(EIO, kWriteFailed), kWriteFailed);
}

}  // namespace
}  // namespace playerx::transfers
