#pragma once

#include <filesystem>

#include "playerx/platform/Descriptor.h"

namespace playerx {

/// Opens a file for reading. If a power cut has torn its content, the newest complete version
/// beside it is opened instead and gets the name; a file that was torn before any version of it was
/// on the disk counts as missing. Does not wait for the other end of a pipe. Empty, and the error
/// number (`errno` values), when nothing can be read. May be called from any thread.
Descriptor openWhole(const std::filesystem::path& path, int& error);

}  // namespace playerx
