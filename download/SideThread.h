#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "kvpm/IRunnable.h"
#include "kvpm/Thread.h"

namespace download {

/// Runs calls that may block for long on a thread of its own, so that whoever waits for them can
/// give up. One call at a time.
///
/// Owner: the worker. `start` is called by one thread at a time, the rest by any.
class SideThread : private kvpm::IRunnable {
 public:
  /// `onEnded` runs on the side thread after each call, when `isBusy` is false again.
  explicit SideThread(std::function<void()> onEnded);

  /// Waits for the call.
  ~SideThread() override;

  /// Whether a call is under way. What a call did happens before a false answer.
  bool isBusy() const { return busy_; }

  /// Runs `call` and returns at once. Returns false, and runs nothing, while a call is under way or
  /// when the system has no thread to give. What `call` holds is let go when it has ended; one that
  /// throws has ended too.
  bool start(std::function<void()> call);

  /// Waits for the call.
  void finish();

 private:
  void runThread(kvpm::Thread* thread) override;

  const std::function<void()> onEnded_;
  std::function<void()> call_;  // the starter's until `busy_`, then the side thread's
  std::atomic<bool> busy_{false};
  std::unique_ptr<kvpm::Thread> thread_;
};

}  // namespace download
