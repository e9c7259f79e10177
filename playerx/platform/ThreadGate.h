#pragma once

#include <atomic>

namespace playerx {

/// Holds back the bodies of threads that `kvpm::Thread::start` starts, so that the player can look
/// at a plug-in's state before the plug-in's threads work on it.
///
/// One gate for the process, open at the beginning. While it is closed, a started thread counts as
/// running but waits in front of its body; a thread that is asked to stop there ends without having
/// entered it. Bodies already entered are not affected. All operations may be called from any
/// thread and never fail.
class ThreadGate {
 public:
  ThreadGate() = delete;

  /// Threads started from now on wait.
  static void close();

  /// Lets all waiting threads in, and those started from now on.
  static void open();

  static bool isOpen();

  /// For a thread that is about to enter its body: waits until the gate is open or `stop` is true.
  /// Returns true when the body may be entered.
  static bool pass(const std::atomic<bool>& stop);

  /// Has waiting threads look at their `stop` again; called after one was set.
  static void wake();
};

}  // namespace playerx
