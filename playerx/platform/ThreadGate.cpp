#include "playerx/platform/ThreadGate.h"

#include "playerx/platform/GuardMutex.h"

namespace playerx {
namespace {

struct Gate {
  GuardMutex mutex;
  Condition changed;
  bool open KVPM_GUARDED_BY(mutex) = true;
};

// Never destroyed: a thread may still wait here while the process ends.
Gate& theGate() {
  static Gate& instance = *new Gate;
  return instance;
}

void setOpen(Gate& gate, bool open) {
  const GuardLock lock(gate.mutex);
  gate.open = open;
  gate.changed.notifyAll();
}

}  // namespace

void ThreadGate::close() { setOpen(theGate(), false); }

void ThreadGate::open() { setOpen(theGate(), true); }

bool ThreadGate::isOpen() {
  Gate& gate = theGate();
  const GuardLock lock(gate.mutex);
  return gate.open;
}

bool ThreadGate::pass(const std::atomic<bool>& stop) {
  Gate& gate = theGate();
  const GuardLock lock(gate.mutex);
  if (gate.open) return true;
  while (!gate.open && !stop) gate.changed.wait(gate.mutex);
  return !stop;
}

void ThreadGate::wake() {
  Gate& gate = theGate();
  // Under the lock, so that a waiting thread has either seen the flag or is notified.
  const GuardLock lock(gate.mutex);
  gate.changed.notifyAll();
}

}  // namespace playerx
