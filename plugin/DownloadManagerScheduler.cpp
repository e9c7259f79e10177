#include <chrono>
#include <utility>

#include "plugin/DownloadManagerImpl.h"
#include "plugin/StatusGroups.h"

namespace {

/// The longest that the scheduler sleeps without looking; an event wakes it at once.
constexpr std::chrono::milliseconds kIdleInterval{500};

}  // namespace

void DownloadManager::DownloadManagerImpl::runThread(kvpm::Thread* thread) {
  while (!thread->shouldStop()) {
    const plugin::EventCount::Ticket ticket = events_.ticket();
    if (!runNext(thread)) events_.wait(ticket, kIdleInterval);
  }
}

/// Carries one download from pick to outcome; false when there is none to be picked.
bool DownloadManager::DownloadManagerImpl::runNext(kvpm::Thread* thread) {
  std::unique_ptr<DownloadItem> picked = pick();
  if (picked == nullptr) return false;
  DownloadItem& copy = *picked.release();  // the worker's, which keeps it until its next run
  const DownloadStatusEnumType result = worker_.downloadVideo(&copy);
  // Whoever asks the thread to stop may hold the lock and wait for the thread.
  if (!enterDownloadLock(thread)) return true;
  recordOutcome(copy, result);
  downloadLock_.leaveQuietly();
  return true;
}

/// The worker's own copy of the first item that may be downloaded, which is at the top by then.
/// Never waits for the host, which may be waiting for the scheduler under these locks.
std::unique_ptr<DownloadItem> DownloadManager::DownloadManagerImpl::pick() {
  if (isPaused() || !controlLock_.tryEnter()) return nullptr;
  std::unique_ptr<DownloadItem> picked;
  if (downloadLock_.tryEnter()) {
    picked = pickUnderLocks();
    downloadLock_.leaveQuietly();
  }
  controlLock_.leaveQuietly();
  return picked;
}

std::unique_ptr<DownloadItem> DownloadManager::DownloadManagerImpl::pickUnderLocks() {
  if (isPaused()) return nullptr;  // paused between the look at the flag and the locks
  const std::optional<unsigned int> id = idOfNext();
  if (!id) return nullptr;
  moveVideoToTop(*id);
  updateListChanged();
  updateListChanged();
  // The view that was told may have paused or rearranged the queue: this thread has the locks.
  if (isPaused() || idOfNext() != id) return nullptr;
  const kvpm::CritLock lock(queueLock_);
  const Item* const item = queue_.find(*id);
  if (item == nullptr) return nullptr;
  run_ = {*id, false};
  worker_.prepare();
  return std::make_unique<DownloadItem>(item);
}

/// Nothing when there is no candidate, or when the first one is held: it blocks those behind it.
std::optional<unsigned int> DownloadManager::DownloadManagerImpl::idOfNext() {
  const kvpm::CritLock lock(queueLock_);
  const Item* const item = getNextItemForDownload();
  if (item == nullptr || item->getStatus() == DownloadStatusHeld) return std::nullopt;
  return item->getId();
}

VeskPlayerX::DownloadItemInterface* DownloadManager::DownloadManagerImpl::getNextItemForDownload() {
  return queue_.nextForDownload();
}

/// Waits for the download lock; false when the thread is asked to stop meanwhile.
bool DownloadManager::DownloadManagerImpl::enterDownloadLock(kvpm::Thread* thread) {
  for (;;) {
    const plugin::EventCount::Ticket ticket = events_.ticket();
    if (downloadLock_.tryEnter()) return true;
    if (thread->shouldStop()) return false;
    events_.wait(ticket, kIdleInterval);
  }
}

/// The copy is the scheduler's to write: between two runs the worker does not touch its item.
void DownloadManager::DownloadManagerImpl::recordOutcome(DownloadItem& copy,
                                                         DownloadStatusEnumType result) {
  const Run run = takeRun();
  copy.setStatus(plugin::afterRun(result));
  if (result == DownloadStatusStopped) {
    updateListChanged();  // the item keeps the state that whoever stopped it has given it
  } else if (result != DownloadStatusFailed || !run.superseded) {
    updateStatus(copy.getId(), result);
  }
}

DownloadManager::DownloadManagerImpl::Run DownloadManager::DownloadManagerImpl::takeRun() {
  const kvpm::CritLock lock(queueLock_);
  return std::exchange(run_, {});
}

void DownloadManager::DownloadManagerImpl::pauseByHost() {
  const plugin::OperationHold download(downloadLock_);
  pause();
}

void DownloadManager::DownloadManagerImpl::resumeByHost() {
  const plugin::OperationHold download(downloadLock_);
  resume();
}

void DownloadManager::DownloadManagerImpl::cancelByHost() {
  const plugin::OperationHold download(downloadLock_);
  cancelCurrentDownload();
}

void DownloadManager::DownloadManagerImpl::pause() {
  paused_ = true;
  cancelCurrentDownload();
  const std::optional<unsigned long long> heldSession = [this] {
    const kvpm::CritLock lock(queueLock_);
    return queue_.park();
  }();
  if (heldSession) worker_.stopDownload(*heldSession);
  updateListChanged();
}

void DownloadManager::DownloadManagerImpl::resume() {
  {
    const kvpm::CritLock lock(queueLock_);
    queue_.requeue();
    paused_ = false;
  }
  events_.raise();
  updateListChanged();
}

void DownloadManager::DownloadManagerImpl::cancelCurrentDownload() {
  const std::optional<unsigned long long> session = [this]() -> std::optional<unsigned long long> {
    const kvpm::CritLock lock(queueLock_);
    const Item* const head = queue_.at(0);
    if (head == nullptr || !plugin::isActive(head->getStatus())) return std::nullopt;
    return head->getUID();
  }();
  if (session) worker_.stopDownload(*session);
  if (thread_.isRunning()) stopWorker();
}

/// Stops the present transfer and waits for its end, which does not wait for the online services.
void DownloadManager::DownloadManagerImpl::stopWorker() {
  ++stops_;
  events_.raise();
  worker_.stop();
  --stops_;
}

void DownloadManager::DownloadManagerImpl::retry(unsigned int id) {
  const plugin::OperationHold control(controlLock_);
  const plugin::OperationHold download(downloadLock_);
  if (statusOf(id) == DownloadStatusFailed) continueFirst(id);
}

/// Puts an item at the top and restarts the queue with it. It is queued before the queue is parked,
/// so that it is not the one that is parked as paused, and once more when the transfer has been
/// stopped, whose last reports may be about this very item.
void DownloadManager::DownloadManagerImpl::continueFirst(unsigned int id) {
  requeueForHost(id);
  pause();
  requeueForHost(id);
  moveVideoToTop(id);
  resume();
}
