#include "playerx/platform/ThreadGate.h"

#include <condition_variable>
#include <mutex>

#include "playerx/platform/ThreadGateWait.h"

namespace playerx {
namespace {

struct Gate {
  std::mutex mutex;
  std::condition_variable changed;
  bool open = true;  // guarded by mutex
};

// Never destroyed: a thread may still wait here while the process ends.
Gate& gate() {
  static Gate& instance = *new Gate;
  return instance;
}

void setOpen(bool open) {
  {
    const std::lock_guard lock(gate().mutex);
    gate().open = open;
  }
  gate().changed.notify_all();
}

}  // namespace

void ThreadGate::close() { setOpen(false); }

void ThreadGate::open() { setOpen(true); }

bool ThreadGate::isOpen() {
  const std::lock_guard lock(gate().mutex);
  return gate().open;
}

bool passThreadGate(const std::atomic<bool>& stop) {
  std::unique_lock lock(gate().mutex);
  if (gate().open) return true;
  gate().changed.wait(lock, [&stop] { return gate().open || stop.load(); });
  return !stop.load();
}

void wakeThreadGate() {
  // Passing through the lock: a waiter has either seen the flag or is reachable by the notice.
  { const std::lock_guard lock(gate().mutex); }
  gate().changed.notify_all();
}

}  // namespace playerx
