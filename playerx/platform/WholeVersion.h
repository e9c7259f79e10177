#pragma once

#include <filesystem>

#include "playerx/platform/Descriptor.h"

namespace playerx {

/// Opens a file for reading. Where a power cut has torn its content, the newest whole version that
/// lies beside it is opened instead and gets the name; a file that was torn before any version of
/// it was on the disk counts as one that is not there. Does not wait for the other end of a pipe.
/// Empty, and the error number (`errno` values), when there is nothing to be read. From any thread.
Descriptor openWhole(const std::filesystem::path& path, int& error);

}  // namespace playerx
