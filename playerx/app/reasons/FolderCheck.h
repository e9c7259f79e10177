#pragma once

#include <string>

namespace playerx {

/// Whether files can be kept in this folder, which may still have to be made: the next folder above
/// that exists can be written and lies on a disk, not in a file system of the kernel's own. Any
/// thread; touches nothing.
bool canHoldFiles(const std::string& folder);

}  // namespace playerx
