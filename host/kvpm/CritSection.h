#pragma once

#include <memory>

#include "kvpm/ThreadAnnotations.h"

namespace kvpm {

/// A re-entrant lock: the thread that holds it may take it again, and gives it up with as many
/// `leave` calls as it made `enter` calls.
class KVPM_CAPABILITY("critical section") CritSection {
 public:
  CritSection();
  CritSection(const CritSection&) = delete;
  CritSection& operator=(const CritSection&) = delete;
  ~CritSection();

  /// Waits, without limit, until the calling thread holds the section.
  void enter() KVPM_ACQUIRE();

  /// Takes the section when no other thread holds it. Never waits. Returns whether it was taken.
  bool tryEnter() KVPM_TRY_ACQUIRE(true);

  /// Undoes one `enter` or successful `tryEnter` of the calling thread.
  void leave() KVPM_RELEASE();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// Holds a `CritSection` for the length of a scope.
class KVPM_SCOPED_CAPABILITY CritLock {
 public:
  /// Waits for the section; `section` outlives the lock.
  explicit CritLock(CritSection& section) KVPM_ACQUIRE(section) : section_(section) {
    section_.enter();
  }
  CritLock(const CritLock&) = delete;
  CritLock& operator=(const CritLock&) = delete;
  ~CritLock() KVPM_RELEASE() { section_.leave(); }

 private:
  CritSection& section_;
};

}  // namespace kvpm
