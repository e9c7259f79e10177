#include "plugin/Scheduler.h"

#include <algorithm>
#include <chrono>

#include "download/BackgroundThread.h"
#include "kvpm/TimeTools.h"
#include "plugin/StatusGroups.h"

namespace plugin {
namespace {

/// How often the end of the thread is looked for. Its last event comes before its end, so nothing
/// announces the end itself.
constexpr std::uint32_t kStopPollMilliseconds = 1;

/// How long nothing must have happened before an idle queue is looked at.
constexpr std::chrono::milliseconds kCalm{10};

}  // namespace

Scheduler::Scheduler(SharedQueue& queue, OperationLock& lock, TransferControl& transfers,
                     Moves& moves, Progress& progress)
    : queue_(queue), lock_(lock), transfers_(transfers), moves_(moves), progress_(progress) {}

void Scheduler::start() {
  if (transfers_.isClosing() || thread_.isRunning()) return;
  startsIdle_ = !candidate();
  thread_.start();
}

void Scheduler::stop() {
  if (!thread_.isRunning()) return;
  thread_.stop();
  const OperationLock::WaitForBackground wait(lock_);  // raises the event that the thread waits for
  while (thread_.isRunning()) kvpm::TimeTools::sleep(kStopPollMilliseconds);
}

void Scheduler::runThread(kvpm::Thread*) {
  const download::BackgroundThread mark;
  if (startsIdle_) awaitCalm();
  while (!thread_.shouldStop()) {
    const EventCount::Key key = queue_.events().key();
    bool hasRun = false;
    try {
      hasRun = runNext();
    } catch (...) {  // a view that throws, or no memory: another pass may fare better
    }
    if (hasRun) continue;
    queue_.events().wait(key);
    if (queue_.events().key() != key) awaitCalm();
  }
}

/// What a host does in a row, such as adding films and ordering them, is one event: the first film
/// is picked once the queue is as the host wants it.
void Scheduler::awaitCalm() {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + EventCount::kLongestWait;
  EventCount::Key key = queue_.events().key();
  for (auto now = Clock::now(); !thread_.shouldStop() && now < end; now = Clock::now()) {
    queue_.events().wait(key,
                         std::min(kCalm, std::chrono::ceil<std::chrono::milliseconds>(end - now)));
    const EventCount::Key newest = queue_.events().key();
    if (newest == key) return;
    key = newest;
  }
}

/// Carries one download from pick to outcome; false when nothing can be picked.
bool Scheduler::runNext() {
  std::unique_ptr<DownloadItem> picked = pick();
  if (picked == nullptr) return false;
  DownloadItem& copy = *picked.release();  // the worker's, which keeps it until its next run
  const DownloadStatusEnumType result = transfers_.run(&copy);
  if (!enterUnlessStopped()) return true;
  const QuietOperationGuard guard(lock_);
  record(copy, result);
  return true;
}

/// The worker's own copy of the first item that may be downloaded, which is at the top by then.
std::unique_ptr<DownloadItem> Scheduler::pick() {
  if (!candidate() || !enterUnlessStopped()) return nullptr;
  const QuietOperationGuard guard(lock_);
  return pickFirst();
}

std::unique_ptr<DownloadItem> Scheduler::pickFirst() {
  const std::optional<unsigned int> id = candidate();
  if (!id) return nullptr;
  moves_.moveToTop(*id);
  // Hosts count on two notices of a pick: one of the new order, one of the coming start. They look
  // alike, and each saves the queue before the view is told.
  queue_.announceList();
  queue_.announceList();
  // The view that was told may have paused or rearranged the queue: this thread holds the lock.
  return candidate() == id ? prepare(*id) : nullptr;
}

/// The copy is made first: if there is no memory for it, no transfer has been announced.
std::unique_ptr<DownloadItem> Scheduler::prepare(unsigned int id) {
  auto copy = queue_.use([id](const DownloadQueue& queue) {
    const SharedQueue::Item* const item = queue.find(id);
    return item != nullptr ? std::make_unique<DownloadItem>(item) : nullptr;
  });
  if (copy != nullptr) transfers_.prepare(id);
  return copy;
}

/// What may be downloaded now. A held item at the head blocks those behind it.
std::optional<unsigned int> Scheduler::candidate() {
  if (transfers_.isPaused() || transfers_.isClosing()) return std::nullopt;
  const std::optional<ItemState> item =
      queue_.use([](const DownloadQueue& queue) { return stateOf(queue.nextForDownload()); });
  if (!item || item->status == DownloadStatusHeld) return std::nullopt;
  return item->id;
}

/// Waits for the operation lock; false when the thread is asked to stop meanwhile, since the thread
/// that asks may hold the lock. It gives way to nothing else: an outcome would be lost, and beside
/// a busy host a pick would come late.
bool Scheduler::enterUnlessStopped() {
  for (;;) {
    const EventCount::Key key = queue_.events().key();
    if (lock_.tryEnter()) return true;
    if (thread_.shouldStop()) return false;
    queue_.events().wait(key);
  }
}

/// The copy is the scheduler's to write: between two runs the worker does not touch its item.
void Scheduler::record(DownloadItem& copy, DownloadStatusEnumType result) {
  const bool failureCounts = transfers_.finish();
  copy.setStatus(afterRun(result));
  if (result == DownloadStatusStopped) {
    queue_.announceList();  // the item keeps the state that the stop has given it
  } else if (result != DownloadStatusFailed || failureCounts) {
    progress_.updateStatus(copy.getId(), result);
  }
}

void Scheduler::retry(unsigned int id) {
  if (!lock_.enter()) return;
  const OperationGuard guard(lock_);
  const std::optional<ItemState> item = queue_.state(id);
  if (item && item->status == DownloadStatusFailed) continueWith(id);
}

/// The item is queued before the pause, so that it is not the one that is parked as paused, and
/// again after it: the last reports of the transfer that it stopped may be about this very item.
void Scheduler::continueWith(unsigned int id) {
  TransferControl::ResumeAtEnd atEnd(transfers_);
  transfers_.setStatus(id, DownloadStatusQueued);
  transfers_.pause();
  transfers_.setStatus(id, DownloadStatusQueued);
  moves_.moveToTop(id);
  atEnd.resume();
}

}  // namespace plugin
