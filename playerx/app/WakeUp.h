#pragma once

#include <chrono>

namespace playerx {

/// What ended a wait.
enum class WakeReason { kEvent, kInterrupt, kTimeout };

/// The main thread's one place to wait: for events that other threads raise, for Ctrl-C, or for a
/// time. While it lives, SIGINT, SIGTERM and SIGHUP are blocked in the thread that built it and in
/// all threads started from there, and are taken as interrupts. Build it before any thread.
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

  /// Waits at most `timeout` (negative: without limit) and takes back what was raised. An interrupt
  /// goes before an event. Main thread only.
  WakeReason wait(std::chrono::milliseconds timeout);

  /// Waits for `time`, or less when an interrupt comes; what was raised stays for the next `wait`.
  /// Returns kInterrupt or kTimeout. Main thread only.
  WakeReason rest(std::chrono::milliseconds time);

 private:
  bool takeInterrupt();

  int eventFd_;
  int signalFd_;
};

}  // namespace playerx
