#pragma once

#include <chrono>

namespace plugin {

/// The host's event loop, which a long operation keeps running.
class HostEventLoop {
 public:
  HostEventLoop() = delete;

  /// Processes the loop's pending events when the calling thread is the loop's own.
  static void process();

  /// The longest that the calling thread may sleep between two calls of `process`.
  static std::chrono::milliseconds longestSleep();
};

}  // namespace plugin
