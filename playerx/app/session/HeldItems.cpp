#include "playerx/app/session/HeldItems.h"

#include <algorithm>

namespace playerx::session {

using model::ItemState;

void HeldItems::adopt(const Queue& queue) {
  for (const ItemState& item : queue) {
    if (item.status == DownloadStatusStopped) ids_.insert(item.id);
  }
  keepStopped();
}

void HeldItems::hold(const ItemState& item, const Queue& queue) {
  ids_.insert(item.id);
  keepStopped();
  whileStopped(session_, queue, item,
               [&] { session_.manager().updateStatus(item.id, DownloadStatusStopped); });
}

void HeldItems::letGo(unsigned int id) {
  ids_.erase(id);
  keepStopped();
  session_.manager().updateStatus(id, DownloadStatusQueued);
}

void HeldItems::letAllGo(const Queue& queue) {
  for (const ItemState& item : queue) {
    if (item.status == DownloadStatusStopped) letGo(item.id);
  }
  ids_.clear();
  keepStopped();
}

void HeldItems::holdAgain(const Queue& queue) {
  for (const ItemState& item : queue) {
    if (ids_.contains(item.id) && model::isUnfinished(item.status)) hold(item, queue);
  }
}

bool HeldItems::isBeforeHold(const QueueEvent& event) const {
  return event.kind == QueueEvent::Kind::kChanged && ids_.contains(event.item.id) &&
         model::isUnfinished(event.item.status);
}

namespace {

/// Whether the manager may be at work on an item: on the first one that is unfinished, whatever its
/// status says, because adding another one has it say "queued".
bool isTransferred(const PlayerSession& session, const HeldItems::Queue& queue,
                   const ItemState& item) {
  if (!session.isStarted()) return false;
  const auto first = std::find_if(queue.begin(), queue.end(), [](const ItemState& each) {
    return model::isUnfinished(each.status);
  });
  return first != queue.end() && first->id == item.id;
}

}  // namespace

void whileStopped(PlayerSession& session, const HeldItems::Queue& queue, const ItemState& item,
                  const std::function<void()>& change) {
  VeskPlayerX::DownloadManagerInterface& manager = session.manager();
  const bool isStopped = !isTransferred(session, queue, item) || manager.isPaused();
  if (!isStopped) manager.pause();
  change();
  if (!isStopped) manager.resume();
}

}  // namespace playerx::session
