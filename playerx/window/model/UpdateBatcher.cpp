#include "playerx/window/model/UpdateBatcher.h"

#include <utility>

namespace playerx::window {

UpdateBatcher::UpdateBatcher(QObject* parent) : QObject(parent) {
  pause_.setSingleShot(true);
  pause_.setInterval(kIntervalMs);
  connect(&pause_, &QTimer::timeout, this, &UpdateBatcher::flush);
}

void UpdateBatcher::add(const QueueUpdate& update) {
  if (waiting_) {
    waiting_->append(update);
  } else {
    waiting_ = update;
  }
  if (!pause_.isActive()) flush();
}

void UpdateBatcher::flush() {
  if (!waiting_) return;
  pause_.start();
  Q_EMIT ready(*std::exchange(waiting_, std::nullopt));
}

}  // namespace playerx::window
