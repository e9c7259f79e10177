#include "playerx/transfers/SystemError.h"

#include <cerrno>
#include <system_error>

namespace playerx::transfers {

TransferFailure failureOfError(int error, TransferFailure otherwise) {
  const bool isFull = error == ENOSPC || error == EDQUOT || error == EFBIG;
  if (!isFull) return otherwise;
  return otherwise == TransferFailure::kMediaFolder ? TransferFailure::kNoSpaceForFilm
                                                    : TransferFailure::kNoSpace;
}

std::string describeError(const std::filesystem::path& path, int error) {
  return path.string() + ": " + std::system_category().message(error);
}

}  // namespace playerx::transfers
