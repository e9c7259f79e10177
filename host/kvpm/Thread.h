#pragma once

#include <memory>

namespace kvpm {

class IRunnable;

/// A thread of the host's platform, run over an `IRunnable`.
///
/// All operations may be called from any thread; `start` and the destructor by one at a time.
class Thread {
 public:
  /// Does not start anything. `runnable` is not owned and must outlive this object.
  explicit Thread(IRunnable* runnable);
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

  /// Asks the body to stop and waits, without limit, until it has returned. Must not run on the
  /// thread itself.
  ~Thread();

  /// Starts the body on a new thread and takes back an earlier `stop`. Returns false, and changes
  /// nothing, while the body is still running or when the system has no thread to give.
  bool start();

  /// Asks the body to stop and returns at once.
  void stop();

  /// True from a successful `start` until the body has returned. Everything that the body did
  /// happens before a false answer.
  bool isRunning() const;

  /// True once `stop` was called since the last `start`.
  bool shouldStop() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace kvpm
