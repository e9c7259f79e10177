#pragma once

#include <deque>
#include <functional>
#include <thread>

#include "playerx/platform/GuardMutex.h"

namespace playerx::transfers {

/// A thread that does pieces of work one after the other, in the order in which they came. The
/// library's files thread: what may have to wait for the disk is done there.
///
/// All operations may be called from any thread. Destroyed, it does what is left, then ends its
/// thread.
class WorkQueue {
 public:
  WorkQueue();
  WorkQueue(const WorkQueue&) = delete;
  WorkQueue& operator=(const WorkQueue&) = delete;
  ~WorkQueue();

  /// Returns at once.
  void post(std::function<void()> work);

  /// True when everything that was posted is done.
  bool isIdle();

 private:
  void run();
  std::function<void()> next();

  GuardMutex mutex_;
  Condition changed_;
  std::deque<std::function<void()>> works_ KVPM_GUARDED_BY(mutex_);
  bool isWorking_ KVPM_GUARDED_BY(mutex_) = false;
  bool isClosing_ KVPM_GUARDED_BY(mutex_) = false;
  std::thread thread_;
};

}  // namespace playerx::transfers
