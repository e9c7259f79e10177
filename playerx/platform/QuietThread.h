#pragma once

#include <functional>
#include <thread>

namespace playerx {

/// Starts a thread that takes none of the process's signals: the host's handlers do not run on it,
/// and a write to a closed connection or past a file size limit is an error number and no more.
/// Threads that it starts are the same.
std::thread startQuietThread(std::function<void()> body);

}  // namespace playerx
