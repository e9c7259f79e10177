#pragma once

#include <memory>

#include "kvpm/ThreadAnnotations.h"

namespace kvpm {

/// A lock that one thread holds at a time. Not re-entrant: a second `lock` by the holder never
/// returns.
class KVPM_CAPABILITY("mutex") Mutex {
 public:
  Mutex();
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;
  ~Mutex();

  /// Waits, without limit, until the calling thread holds the lock.
  void lock() KVPM_ACQUIRE();

  /// Gives the lock back. Only the holder may call it.
  void unlock() KVPM_RELEASE();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// Holds a `Mutex` for the length of a scope.
class KVPM_SCOPED_CAPABILITY MutexLock {
 public:
  /// Waits for the mutex, which outlives the lock.
  explicit MutexLock(Mutex& mutex) KVPM_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;
  ~MutexLock() KVPM_RELEASE() { mutex_.unlock(); }

 private:
  Mutex& mutex_;
};

}  // namespace kvpm
