#include "plugin/Moves.h"

#include "plugin/StatusGroups.h"

namespace plugin {

bool Moves::moveUp(unsigned int id) {
  if (!lock_.enter()) return false;
  const OperationGuard guard(lock_);
  const std::optional<Top> pair = top();
  const bool changesHead = pair && pair->second.id == id;
  return move(changesHead ? pair : std::nullopt,
              [id](DownloadQueue& queue) { return queue.moveUp(id); });
}

bool Moves::moveDown(unsigned int id) {
  if (!lock_.enter()) return false;
  const OperationGuard guard(lock_);
  const std::optional<Top> pair = top();
  // Above a completed or failed item the head stays where it is. Such a move changes nothing, so it
  // stops no transfer either.
  const bool changesHead = pair && pair->head.id == id && !isAtBottom(pair->second.status);
  return move(changesHead ? pair : std::nullopt,
              [id](DownloadQueue& queue) { return queue.moveDown(id); });
}

void Moves::moveToTop(unsigned int id) {
  if (!lock_.enter()) return;
  const OperationGuard guard(lock_);
  while (moveUp(id)) {
  }
}

void Moves::moveToBottom(unsigned int id) {
  if (!lock_.enter()) return;
  const OperationGuard guard(lock_);
  while (moveDown(id)) {
  }
}

void Moves::resumeDownloadingFile(const std::wstring& path) {
  if (!lock_.enter()) return;
  const OperationGuard guard(lock_);
  const std::optional<ItemState> item =
      queue_.use([&path](const DownloadQueue& queue) { return stateOf(queue.findPath(path)); });
  if (item && isCandidate(item->status) && item->status != DownloadStatusHeld) {
    moveToTop(item->id);
  }
}

bool Moves::remove(unsigned int id) {
  if (!lock_.enter()) return false;
  const OperationGuard guard(lock_);
  const bool found = queue_.use([id](DownloadQueue& queue) { return queue.remove(id); });
  if (found) queue_.announceList();
  return found;
}

void Moves::clearCompletedDownloads() {
  if (!lock_.enter()) return;
  const OperationGuard guard(lock_);
  const std::size_t removed = queue_.use([](DownloadQueue& queue) {
    return queue.removeIf(
        [](const SharedQueue::Item& item) { return item.getStatus() == DownloadStatusCompleted; });
  });
  if (removed > 0) queue_.announceList();
}

std::optional<Moves::Top> Moves::top() {
  return queue_.use([](const DownloadQueue& queue) -> std::optional<Top> {
    const std::optional<ItemState> head = stateOf(queue.at(0));
    const std::optional<ItemState> second = stateOf(queue.at(1));
    return head && second ? std::make_optional(Top{*head, *second}) : std::nullopt;
  });
}

/// Takes a step. `changing` are the two items at the top when the step makes them change places.
bool Moves::move(const std::optional<Top>& changing, const Step& step) {
  const TransferControl::HeadChange headChange(transfers_, changing.has_value());
  if (headChange.isActive()) transfers_.cancel();
  if (changing) swapStates(*changing, !headChange.isActive());
  const bool moved = queue_.use(step);
  if (moved) queue_.announceList();
  return moved;
}

void Moves::swapStates(const Top& top, bool isPaused) {
  // An outcome that the transfer reached before it was stopped stands.
  const std::optional<ItemState> head = queue_.state(top.head.id);
  const bool hasFailedNow =
      head && head->status == DownloadStatusFailed && top.head.status != DownloadStatusFailed;
  if (!hasFailedNow) transfers_.setStatus(top.head.id, DownloadStatusQueued);
  transfers_.setStatus(top.second.id, isPaused ? DownloadStatusPaused : DownloadStatusQueued);
}

}  // namespace plugin
