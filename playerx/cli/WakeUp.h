#pragma once

#include <chrono>

namespace playerx::cli {

/// What ended a wait.
enum class WakeReason { kEvent, kInterrupt, kTimeout };

/// Blocks SIGINT, SIGTERM and SIGHUP in this thread and in all that are started from it: they wait
/// for a `WakeUp` instead of ending the program. Call it first of all.
void blockInterrupts();

/// The main thread's one place to wait: for events that other threads raise, for Ctrl-C, or for a
/// time. While it lives, SIGINT, SIGTERM and SIGHUP are blocked in the thread that built it and in
/// all threads started from there, and are taken as interrupts. Build it before any thread is
/// started.
class WakeUp {
 public:
  WakeUp();
  WakeUp(const WakeUp&) = delete;
  WakeUp& operator=(const WakeUp&) = delete;
  ~WakeUp();

  /// Lets interrupts end the program as usual from now on, instead of a wait.
  void releaseInterrupts();

  /// Ends the present or the next wait. Any thread.
  void raise();

  /// Waits at most `timeout` (negative: no limit) and clears what was raised. An interrupt goes
  /// before an event. Main thread only.
  WakeReason wait(std::chrono::milliseconds timeout);

  /// Whether an interrupt has come; each is told once. Main thread only.
  bool takeInterrupt();

  /// Waits for `time`, or less when an interrupt comes; what was raised stays for the next `wait`.
  /// Returns kInterrupt or kTimeout. Main thread only.
  WakeReason rest(std::chrono::milliseconds time);

 private:
  int eventFd_;
  int signalFd_;
};

}  // namespace playerx::cli
