#pragma once

#include <string>

namespace playerx::door {

/// Where the process that holds the queue of a data folder listens: a socket in the user's runtime
/// folder (`$XDG_RUNTIME_DIR`), named after the data folder; without a runtime folder that is the
/// user's alone, in the data folder; in the system's folder for temporary files, below a folder of
/// the user's own, where the data folder's path is too long for a socket. UTF-8; the same for every
/// spelling of the data folder, which must exist. Empty when there is no place.
std::string doorPath(const std::string& dataFolder);

}  // namespace playerx::door
