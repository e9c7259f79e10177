#pragma once

#include <cstddef>
#include <string>

namespace playerx::session {

/// So many threads a download takes, or only a look at the queue, with some to spare.
inline constexpr std::size_t kThreadsToDownload = 12;
inline constexpr std::size_t kThreadsToLook = 2;

/// Whether the system lets this process open the files that a download takes, and start so many
/// threads. Returns one sentence when it does not, and empty when it does. Raises the limit of open
/// files as far as it is this process's to raise. Any thread.
std::string lackOfResources(std::size_t threads = kThreadsToDownload);

}  // namespace playerx::session
