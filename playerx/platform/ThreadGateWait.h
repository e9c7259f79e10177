#pragma once

#include <atomic>

namespace playerx {

/// Waits until the gate is open or `stop` is true. Returns true when the body may be entered.
bool passThreadGate(const std::atomic<bool>& stop);

/// Has waiting threads look at their stop flags again; called after one was set.
void wakeThreadGate();

}  // namespace playerx
