#pragma once

namespace download {

/// Marks the calling thread, for the length of a scope, as one that a stop, a close or a detaching
/// of the view may be waiting for: the scheduler's, the library's inside a report, and those on
/// which the worker and its manager make calls that may block.
///
/// What such a thread calls must not wait for an operation of the host, nor for a transfer to make
/// progress. Marks may be nested.
class BackgroundThread {
 public:
  BackgroundThread() { ++depth; }
  BackgroundThread(const BackgroundThread&) = delete;
  BackgroundThread& operator=(const BackgroundThread&) = delete;
  ~BackgroundThread() { --depth; }

  /// Whether the calling thread is marked.
  static bool isCurrent() { return depth > 0; }

 private:
  static inline thread_local int depth = 0;
};

}  // namespace download
