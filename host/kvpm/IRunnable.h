#pragma once

namespace kvpm {

class Thread;

/// The body of a thread.
///
/// Owned by the creator of the `Thread`; must outlive it.
class IRunnable {
 public:
  IRunnable() = default;
  IRunnable(const IRunnable&) = delete;
  IRunnable& operator=(const IRunnable&) = delete;
  virtual ~IRunnable() = default;

  /// Runs on the new thread, once per `Thread::start`. The thread ends when it returns. A long body
  /// asks `thread->shouldStop()` and returns soon after the answer is true. Throws nothing.
  virtual void runThread(Thread* thread) = 0;
};

}  // namespace kvpm
