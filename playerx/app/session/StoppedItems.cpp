#include "playerx/app/session/StoppedItems.h"

#include <algorithm>

namespace playerx::session {

using model::ItemState;

void StoppedItems::adopt(const Queue& queue) {
  for (const ItemState& item : queue) {
    if (item.status == DownloadStatusStopped) session_.view().keepStopped(item.id);
  }
}

void StoppedItems::stop(const ItemState& item, const Queue& queue) {
  session_.view().keepStopped(item.id);
  whileStopped(session_, queue, item,
               [&] { session_.manager().updateStatus(item.id, DownloadStatusStopped); });
}

void StoppedItems::letGo(unsigned int id) {
  session_.view().letGo(id);
  session_.manager().updateStatus(id, DownloadStatusQueued);
}

void StoppedItems::letAllGo(const Queue& queue) {
  session_.view().letAllGo();
  for (const ItemState& item : queue) {
    if (item.status == DownloadStatusStopped) letGo(item.id);
  }
}

void StoppedItems::stopAgain(const Queue& queue) {
  if (!session_.view().isAnyKeptStopped()) return;
  for (const ItemState& item : queue) {
    if (model::isUnfinished(item.status) && session_.view().isKeptStopped(item.id)) {
      stop(item, queue);
    }
  }
}

bool StoppedItems::isBeforeStop(const QueueEvent& event) const {
  return event.kind == QueueEvent::Kind::kChanged && model::isUnfinished(event.item.status) &&
         session_.view().isKeptStopped(event.item.id);
}

namespace {

/// Whether the manager may be at work on an item: on the first one that is unfinished, whatever its
/// status says, because adding another one has it say "queued".
bool isTransferred(const PlayerSession& session, const StoppedItems::Queue& queue,
                   const ItemState& item) {
  if (!session.isStarted()) return false;
  const auto first = std::find_if(queue.begin(), queue.end(), [](const ItemState& each) {
    return model::isUnfinished(each.status);
  });
  return first != queue.end() && first->id == item.id;
}

}  // namespace

void whileStopped(PlayerSession& session, const StoppedItems::Queue& queue, const ItemState& item,
                  const std::function<void()>& change) {
  VeskPlayerX::DownloadManagerInterface& manager = session.manager();
  const bool isStopped = !isTransferred(session, queue, item) || manager.isPaused();
  if (!isStopped) session.pause();
  change();
  if (!isStopped) manager.resume();
}

}  // namespace playerx::session
