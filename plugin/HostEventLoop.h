#pragma once

#include <chrono>

namespace plugin {

/// The host's event loop, as far as an operation that takes its time lets it run.
class HostEventLoop {
 public:
  HostEventLoop() = delete;

  /// Lets the loop deal with what is waiting for it, when the calling thread is the loop's own.
  static void process();

  /// The longest that the calling thread may sleep between two calls of `process`.
  static std::chrono::milliseconds longestSleep();
};

}  // namespace plugin
