#pragma once

#include <atomic>
#include <thread>

#include "kvpm/CritSection.h"
#include "kvpm/ThreadAnnotations.h"
#include "plugin/EventCount.h"

namespace plugin {

/// What annotations call the operation lock: one name in all the parts that share it.
class KVPM_CAPABILITY("operation lock") OperationLockName {};
inline constexpr OperationLockName kOperationLock{};

/// The re-entrant lock of the manager's operations: one operation at a time, and none between a
/// pick and its start or between an outcome and its record.
///
/// It has one holder, and others may wait for it without limit, so it also settles who must not
/// wait: a background thread gives way while some thread waits for background threads. The
/// scheduler never waits here at all; it tries, and sleeps on the event that a release raises.
/// Safe on all threads.
class OperationLock {
 public:
  /// `events` is not owned and outlives the lock.
  explicit OperationLock(EventCount& events) : events_(events) {}
  OperationLock(const OperationLock&) = delete;
  OperationLock& operator=(const OperationLock&) = delete;

  /// Waits until the calling thread holds the lock. Returns false, without the lock, on a
  /// background thread that would have to wait while a `WaitForBackground` lives.
  [[nodiscard]] bool enter() KVPM_TRY_ACQUIRE(true, kOperationLock) KVPM_NO_ANALYSIS;

  /// Takes the lock when no other thread holds it. Never waits. Returns whether it was taken.
  [[nodiscard]] bool tryEnter() KVPM_TRY_ACQUIRE(true, kOperationLock) KVPM_NO_ANALYSIS;

  /// Undoes one `enter` or `tryEnter` of the calling thread. The last one raises the event.
  void leave() KVPM_RELEASE(kOperationLock) KVPM_NO_ANALYSIS;

  /// The same without the event: for the scheduler, which would wake itself for nothing.
  void leaveQuietly() KVPM_RELEASE(kOperationLock) KVPM_NO_ANALYSIS;

  /// Whether the calling thread holds the lock.
  bool isHeldByCaller() const { return holder_ == std::this_thread::get_id(); }

  /// While one lives, a thread waits for background threads, perhaps with the lock held.
  class WaitForBackground {
   public:
    explicit WaitForBackground(OperationLock& lock);
    WaitForBackground(const WaitForBackground&) = delete;
    WaitForBackground& operator=(const WaitForBackground&) = delete;
    ~WaitForBackground() { --lock_.waits_; }

   private:
    OperationLock& lock_;
  };

  /// Whether a background thread must not keep others waiting now. A change to true raises the
  /// event.
  bool isBackgroundAwaited() const { return waits_ > 0; }

 private:
  bool leaveOnce() KVPM_NO_ANALYSIS;

  EventCount& events_;
  EventCount turns_;  ///< the lock was given back, or background threads are to give way
  std::atomic<int> waits_{0};
  std::atomic<std::thread::id> holder_{};
  kvpm::CritSection section_;
  int depth_ = 0;  // guarded by section_, which the analysis does not know to be this lock
};

/// Gives back an operation lock, already entered, at the end of a scope.
class KVPM_SCOPED_CAPABILITY OperationGuard {
 public:
  explicit OperationGuard(OperationLock& lock) KVPM_REQUIRES(kOperationLock) : lock_(lock) {}
  OperationGuard(const OperationGuard&) = delete;
  OperationGuard& operator=(const OperationGuard&) = delete;
  ~OperationGuard() KVPM_RELEASE() { lock_.leave(); }

 private:
  OperationLock& lock_;
};

/// The same, quietly.
class KVPM_SCOPED_CAPABILITY QuietOperationGuard {
 public:
  explicit QuietOperationGuard(OperationLock& lock) KVPM_REQUIRES(kOperationLock) : lock_(lock) {}
  QuietOperationGuard(const QuietOperationGuard&) = delete;
  QuietOperationGuard& operator=(const QuietOperationGuard&) = delete;
  ~QuietOperationGuard() KVPM_RELEASE() { lock_.leaveQuietly(); }

 private:
  OperationLock& lock_;
};

}  // namespace plugin
