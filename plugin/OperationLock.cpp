#include "plugin/OperationLock.h"

namespace plugin {

void OperationLock::enter() {
  section_.enter();
  ++depth_;
}

bool OperationLock::tryEnter() {
  if (!section_.tryEnter()) return false;
  ++depth_;
  return true;
}

void OperationLock::leave() {
  leaveQuietly();
  events_.raise();
}

void OperationLock::leaveQuietly() {
  --depth_;
  section_.leave();
}

bool OperationLock::isHeldByCaller() {
  if (!section_.tryEnter()) return false;
  const bool held = depth_ > 0;
  section_.leave();
  return held;
}

}  // namespace plugin
