#pragma once

#include <filesystem>
#include <string>

#include "playerx/transfers/TransferFailure.h"

namespace playerx::transfers {

/// What an error number (`errno` values) of a file means for a session: no space there, when that
/// is what it says, or else `otherwise`.
TransferFailure failureOfError(int error, TransferFailure otherwise);

/// "<path>: <the system's words>".
std::string describeError(const std::filesystem::path& path, int error);

}  // namespace playerx::transfers
