#pragma once

#include <atomic>

#include "kvpm/Mutex.h"

namespace kvsc {

/// Ends the waits of an exchange from another thread: one side cancels, the other polls.
///
/// Owned by the canceller; must outlive every session it was given to. All operations may be called
/// from any thread and never block. A cancel lasts until `reset`, so one that comes before the
/// exchange starts is not lost.
class CancelToken {
 public:
  CancelToken();
  CancelToken(const CancelToken&) = delete;
  CancelToken& operator=(const CancelToken&) = delete;
  ~CancelToken();

  /// Ends every wait that polls this token, now and until `reset`.
  void cancel() noexcept;

  /// Undoes the cancel. Called between exchanges, not while one is being cancelled.
  void reset() noexcept;

  bool isCancelled() const noexcept { return cancelled_.load(std::memory_order_acquire); }

  /// Readable exactly while cancelled; must not be read. -1 when the system had no descriptor left:
  /// then a wait has to check `isCancelled` from time to time.
  int fd() const noexcept { return fd_; }

 private:
  const int fd_;
  kvpm::Mutex mutex_;  // held while flag and descriptor change, so that they agree
  std::atomic<bool> cancelled_{false};
};

}  // namespace kvsc
