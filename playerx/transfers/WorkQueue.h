#pragma once

#include <deque>
#include <functional>
#include <thread>

#include "playerx/platform/GuardMutex.h"

namespace playerx::transfers {

/// A thread that does pieces of work one after the other, in the order in which they came. The
/// library's files thread: opening, syncing and moving files may take their time there.
///
/// `post` may be called from any thread. Destroyed, it does what is left, then ends its thread.
class WorkQueue {
 public:
  WorkQueue();
  WorkQueue(const WorkQueue&) = delete;
  WorkQueue& operator=(const WorkQueue&) = delete;
  ~WorkQueue();

  /// Returns at once.
  void post(std::function<void()> work);

 private:
  void run();
  std::function<void()> next();

  GuardMutex mutex_;
  Condition changed_;
  std::deque<std::function<void()>> works_ KVPM_GUARDED_BY(mutex_);
  bool isClosing_ KVPM_GUARDED_BY(mutex_) = false;
  std::thread thread_;
};

}  // namespace playerx::transfers
