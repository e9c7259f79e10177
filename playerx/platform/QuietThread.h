#pragma once

#include <functional>
#include <future>
#include <thread>

namespace playerx {

/// Starts a thread that blocks all signals: the host's handlers do not run on it, and a write to a
/// closed connection or past a file size limit only returns an error number. Threads that it starts
/// inherit this.
std::thread startQuietThread(std::function<void()> body);

/// Runs `body` on such a thread, or where none is to be had on the one that waits for the future.
std::future<void> runQuietly(std::function<void()> body);

}  // namespace playerx
