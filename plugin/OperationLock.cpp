#include "plugin/OperationLock.h"

#include "download/BackgroundThread.h"

namespace plugin {

bool OperationLock::enter() {
  for (;;) {
    const EventCount::Key key = turns_.key();
    if (tryEnter()) return true;
    if (isBackgroundAwaited() && download::BackgroundThread::isCurrent()) return false;
    turns_.wait(key);
  }
}

bool OperationLock::tryEnter() {
  if (!section_.tryEnter()) return false;
  ++depth_;
  holder_ = std::this_thread::get_id();
  return true;
}

void OperationLock::leave() {
  if (leaveOnce()) events_.raise();
}

void OperationLock::leaveQuietly() { leaveOnce(); }

/// Returns whether the lock is free now.
bool OperationLock::leaveOnce() {
  const bool isLast = --depth_ == 0;
  if (isLast) holder_ = std::thread::id();
  section_.leave();
  if (isLast) turns_.raise();
  return isLast;
}

OperationLock::WaitForBackground::WaitForBackground(OperationLock& lock) : lock_(lock) {
  ++lock_.waits_;
  lock_.turns_.raise();
  lock_.events_.raise();
}

}  // namespace plugin
