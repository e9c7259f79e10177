#pragma once

#include <chrono>

#include "playerx/platform/Descriptor.h"

namespace playerx::cli {

/// What ended a wait.
enum class WakeReason { kEvent, kInterrupt, kTimeout };

/// Blocks SIGINT, SIGTERM and SIGHUP in this thread and in all that are started from it: they wait
/// for a `WakeUp` instead of ending the program. Call it first of all.
void blockInterrupts();

/// While it lives, the signals that `blockInterrupts` blocks end the program as usual.
class InterruptsAllowed {
 public:
  InterruptsAllowed();
  InterruptsAllowed(const InterruptsAllowed&) = delete;
  InterruptsAllowed& operator=(const InterruptsAllowed&) = delete;
  ~InterruptsAllowed();
};

/// While it lives, the same signals end the program at once with this exit status, after a sentence
/// on standard error: for work that cannot be broken off, and that a crash does not harm. One at a
/// time, on the main thread; the sentence outlives it.
class InterruptsExit {
 public:
  InterruptsExit(int status, const char* sentence);
  InterruptsExit(const InterruptsExit&) = delete;
  InterruptsExit& operator=(const InterruptsExit&) = delete;
  ~InterruptsExit();
};

/// The main thread's one place to wait: for events that other threads raise, for Ctrl-C, or for a
/// time. While it lives, SIGINT, SIGTERM and SIGHUP are blocked in the thread that built it and in
/// all threads started from there, and are taken as interrupts. Build it before any thread is
/// started.
class WakeUp {
 public:
  WakeUp();
  WakeUp(const WakeUp&) = delete;
  WakeUp& operator=(const WakeUp&) = delete;

  /// Ends the present or the next wait. Any thread.
  void raise();

  /// Waits at most `timeout` (negative: no limit) and clears what was raised. An interrupt goes
  /// before an event. A descriptor (-1: none) that can be read is an event too. Main thread only.
  WakeReason wait(std::chrono::milliseconds timeout, int descriptor = -1);

  /// Whether an interrupt has come that was not taken yet. Any thread.
  bool isInterrupted() const;

  /// Whether an interrupt has come; each is told once. Main thread only.
  bool takeInterrupt();

  /// Waits for `time`, or less when an interrupt comes; what was raised stays for the next `wait`.
  /// Returns kInterrupt or kTimeout. Main thread only.
  WakeReason rest(std::chrono::milliseconds time);

 private:
  const Descriptor event_;
  Descriptor signal_;
};

}  // namespace playerx::cli
