#pragma once

#include "kvpm/CritSection.h"
#include "kvpm/ThreadAnnotations.h"
#include "plugin/EventCount.h"

namespace plugin {

/// A re-entrant lock of the manager's operations which tells the scheduler when it is given back,
/// since the scheduler never blocks on it: it tries, and waits for that event.
class KVPM_CAPABILITY("operation lock") OperationLock {
 public:
  /// `events` is not owned and outlives the lock.
  explicit OperationLock(EventCount& events) : events_(events) {}
  OperationLock(const OperationLock&) = delete;
  OperationLock& operator=(const OperationLock&) = delete;

  /// Waits, without limit, until the calling thread holds the lock.
  void enter() KVPM_ACQUIRE() KVPM_NO_ANALYSIS;

  /// Takes the lock when no other thread holds it. Never waits. Returns whether it was taken.
  bool tryEnter() KVPM_TRY_ACQUIRE(true) KVPM_NO_ANALYSIS;

  /// Undoes one `enter` or `tryEnter` of the calling thread and raises the event.
  void leave() KVPM_RELEASE() KVPM_NO_ANALYSIS;

  /// The same without the event: for the one who waits for it, whom it would wake for nothing.
  void leaveQuietly() KVPM_RELEASE() KVPM_NO_ANALYSIS;

  /// Whether the calling thread holds the lock.
  bool isHeldByCaller() KVPM_NO_ANALYSIS;

 private:
  // Unseen by the analysis of the callers, to whom the lock is this object.
  EventCount& events_;
  kvpm::CritSection section_;
  int depth_ = 0;  // guarded by section_
};

/// Holds an `OperationLock` for the length of a scope.
class KVPM_SCOPED_CAPABILITY OperationHold {
 public:
  explicit OperationHold(OperationLock& lock) KVPM_ACQUIRE(lock) : lock_(lock) { lock_.enter(); }
  OperationHold(const OperationHold&) = delete;
  OperationHold& operator=(const OperationHold&) = delete;
  ~OperationHold() KVPM_RELEASE() { lock_.leave(); }

 private:
  OperationLock& lock_;
};

}  // namespace plugin
