#pragma once

#include <string>

namespace playerx::session {

/// Whether the system lets this process open the files and start the threads that a download takes.
/// Returns one sentence when it does not, and empty when it does. Raises the limit of open files as
/// far as it is this process's to raise. Any thread.
std::string lackOfResources();

}  // namespace playerx::session
