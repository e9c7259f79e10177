#include "playerx/window/queue/LookClock.h"

namespace playerx::window {

namespace {

/// Between two looks at the queue: what changes more often is seen together.
constexpr int kRestMs = 250;

constexpr int kTickMs = 500;

}  // namespace

LookClock::LookClock() {
  ticks_.setInterval(kTickMs);
  rest_.setInterval(kRestMs);
  rest_.setSingleShot(true);
  connect(&ticks_, &QTimer::timeout, this, &LookClock::ticked);
  connect(&rest_, &QTimer::timeout, this, [this] {
    if (isDue_) Q_EMIT due();
  });
}

void LookClock::lookSoon() {
  if (isDue_.exchange(true)) return;
  QMetaObject::invokeMethod(
      this,
      [this] {
        if (!rest_.isActive()) Q_EMIT due();
      },
      Qt::QueuedConnection);
}

void LookClock::lookIfRested() {
  if (looked_.hasExpired(kRestMs)) Q_EMIT due();
}

void LookClock::rest() {
  isDue_ = false;
  rest_.start();
  looked_.start();
}

}  // namespace playerx::window
