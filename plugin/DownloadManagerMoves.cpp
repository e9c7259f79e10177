#include "plugin/DownloadManagerImpl.h"
#include "plugin/StatusGroups.h"

// The first item is the one that is downloaded. A move that changes it stops the transfer; the two
// locks keep the scheduler from picking an item in between.

bool DownloadManager::DownloadManagerImpl::moveUp(unsigned int id) {
  const plugin::OperationHold control(controlLock_);
  const plugin::OperationHold download(downloadLock_);
  const std::optional<Top> pair = top();
  const bool changing = pair && pair->second == id && changeHead(*pair);
  const bool moved = [&] {
    const kvpm::CritLock lock(queueLock_);
    return queue_.moveUp(id);
  }();
  if (moved) updateListChanged();
  if (changing) changingHead_ = false;
  return moved;
}

bool DownloadManager::DownloadManagerImpl::moveDown(unsigned int id) {
  const plugin::OperationHold control(controlLock_);
  const plugin::OperationHold download(downloadLock_);
  const std::optional<Top> pair = top();
  // Above a completed or failed item the head stays where it is. Such a move changes nothing, so it
  // stops no transfer either.
  const bool leavesTop = pair && pair->head == id && !plugin::isAtBottom(pair->secondStatus);
  const bool changing = leavesTop && changeHead(*pair);
  const bool moved = [&] {
    const kvpm::CritLock lock(queueLock_);
    return queue_.moveDown(id);
  }();
  if (moved) updateListChanged();
  if (changing) changingHead_ = false;
  return moved;
}

void DownloadManager::DownloadManagerImpl::moveToTop(unsigned int id) {
  const plugin::OperationHold control(controlLock_);
  moveVideoToTop(id);
}

void DownloadManager::DownloadManagerImpl::moveToBottom(unsigned int id) {
  const plugin::OperationHold control(controlLock_);
  while (moveDown(id)) {
  }
}

void DownloadManager::DownloadManagerImpl::moveVideoToTop(unsigned int id) {
  while (moveUp(id)) {
  }
}

std::optional<DownloadManager::DownloadManagerImpl::Top>
DownloadManager::DownloadManagerImpl::top() {
  const kvpm::CritLock lock(queueLock_);
  const Item* const head = queue_.at(0);
  const Item* const second = queue_.at(1);
  if (head == nullptr || second == nullptr) return std::nullopt;
  return Top{head->getId(), second->getId(), head->getStatus(), second->getStatus()};
}

/// Stops the transfer of the first item, unless the queue is paused, and gives the two items the
/// states that belong to their coming places. Returns whether this was the beginning of a change
/// that the caller has to end.
bool DownloadManager::DownloadManagerImpl::changeHead(const Top& top) {
  const bool wasPaused = isPaused();
  if (!wasPaused) {
    changingHead_ = true;
    cancelCurrentDownload();
  }
  const kvpm::CritLock lock(queueLock_);
  Item* const head = queue_.find(top.head);
  // An outcome that the transfer reached before it was stopped stands.
  const bool failedNow = head != nullptr && head->getStatus() == DownloadStatusFailed &&
                         top.headStatus != DownloadStatusFailed;
  if (head != nullptr && !failedNow) setStatusForHost(*head, DownloadStatusQueued);
  Item* const second = queue_.find(top.second);
  if (second != nullptr) {
    setStatusForHost(*second, wasPaused ? DownloadStatusPaused : DownloadStatusQueued);
  }
  return !wasPaused;
}
