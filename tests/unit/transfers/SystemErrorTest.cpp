#include <gtest/gtest.h>

#include <cerrno>

#include "playerx/transfers/SystemError.h"

namespace playerx::transfers {
namespace {

TEST(SystemErrorTest, AFullDiskIsThatOfTheFolderThatWasWrittenTo) {
  for (const int error : {ENOSPC, EDQUOT, EFBIG}) {
    EXPECT_EQ(failureOfError(error, TransferFailure::kWriteFailed), TransferFailure::kNoSpace);
    EXPECT_EQ(failureOfError(error, TransferFailure::kTempFolder), TransferFailure::kNoSpace);
    EXPECT_EQ(failureOfError(error, TransferFailure::kMediaFolder),
              TransferFailure::kNoSpaceForFilm);
  }
}

TEST(SystemErrorTest, EveryOtherErrorIsWhatTheCallerSays) {
  EXPECT_EQ(failureOfError(EACCES, TransferFailure::kMediaFolder), TransferFailure::kMediaFolder);
  EXPECT_EQ(failureOfError(EIO, TransferFailure::kWriteFailed), TransferFailure::kWriteFailed);
}

}  // namespace
}  // namespace playerx::transfers
