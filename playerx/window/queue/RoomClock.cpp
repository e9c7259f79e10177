#include "playerx/window/queue/RoomClock.h"

#include "playerx/window/queue/QueuePlaces.h"

namespace playerx::window {

namespace {

constexpr int kRoomMs = 10'000;

}  // namespace

RoomClock::RoomClock() {
  ticks_.setInterval(kRoomMs);
  connect(&ticks_, &QTimer::timeout, this, &RoomClock::tell);
}

void RoomClock::start() {
  tell();
  ticks_.start();
}

void RoomClock::tell() {
  const QString folder = mediaFolder();
  Q_EMIT known(folder, freeSpace(folder));
}

}  // namespace playerx::window
