#pragma once

#include <sys/types.h>

#include <atomic>
#include <functional>
#include <thread>

namespace support {

/// Work on a thread of its own that is expected to wait for a lock which the test holds.
/// Owner: the test, which gives the lock back before it joins. Threads: one, for the work alone.
class LockWaiter {
 public:
  explicit LockWaiter(std::function<void()> work);
  LockWaiter(const LockWaiter&) = delete;
  LockWaiter& operator=(const LockWaiter&) = delete;

  /// Joins.
  ~LockWaiter();

  /// Waits until the work sleeps at a lock or has ended; true for the former.
  bool isHeldUp() const;

  /// Waits for the end of the work.
  void join();

 private:
  std::atomic<pid_t> id_{0};
  std::atomic<bool> ended_{false};
  std::thread thread_;  // last: uses the others
};

}  // namespace support
