#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "kvpm/ThreadAnnotations.h"

namespace playerx {

/// A lock for the player's own classes that clang's thread-safety analysis follows. Needs no code
/// to be run before its first use, so it may be static.
class KVPM_CAPABILITY("mutex") GuardMutex {
 public:
  constexpr GuardMutex() = default;
  GuardMutex(const GuardMutex&) = delete;
  GuardMutex& operator=(const GuardMutex&) = delete;

  void lock() KVPM_ACQUIRE() { mutex_.lock(); }
  void unlock() KVPM_RELEASE() { mutex_.unlock(); }

 private:
  friend class Condition;
  std::mutex mutex_;
};

/// Holds a `GuardMutex` for the length of a scope.
class KVPM_SCOPED_CAPABILITY GuardLock {
 public:
  explicit GuardLock(GuardMutex& mutex) KVPM_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  GuardLock(const GuardLock&) = delete;
  GuardLock& operator=(const GuardLock&) = delete;
  ~GuardLock() KVPM_RELEASE() { mutex_.unlock(); }

 private:
  GuardMutex& mutex_;
};

/// A condition variable for a `GuardMutex`. Wake-ups may be spurious: callers test their condition
/// in a loop.
class Condition {
 public:
  using Clock = std::chrono::steady_clock;

  Condition() = default;
  Condition(const Condition&) = delete;
  Condition& operator=(const Condition&) = delete;

  void notifyOne() { condition_.notify_one(); }
  void notifyAll() { condition_.notify_all(); }

  /// Gives the lock up while it waits.
  void wait(GuardMutex& mutex) KVPM_REQUIRES(mutex) {
    std::unique_lock held(mutex.mutex_, std::adopt_lock);
    condition_.wait(held);
    static_cast<void>(held.release());
  }

  /// As `wait`, until `deadline` at most. False when it has passed.
  bool waitUntil(GuardMutex& mutex, Clock::time_point deadline) KVPM_REQUIRES(mutex) {
    std::unique_lock held(mutex.mutex_, std::adopt_lock);
    const std::cv_status status = condition_.wait_until(held, deadline);
    static_cast<void>(held.release());
    return status == std::cv_status::no_timeout;
  }

 private:
  std::condition_variable condition_;
};

}  // namespace playerx
