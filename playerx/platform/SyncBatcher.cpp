#include "playerx/platform/SyncBatcher.h"

#include <unistd.h>

#include <exception>
#include <utility>

#include "playerx/platform/QuietThread.h"

namespace playerx {

SyncBatcher::SyncBatcher(Action action, std::chrono::milliseconds delay)
    : action_(std::move(action)), delay_(delay), process_(::getpid()) {}

SyncBatcher::~SyncBatcher() { finish(); }

void SyncBatcher::request(const std::filesystem::path& file) {
  const GuardLock lock(mutex_);
  const bool first = pending_.empty();
  if (first) deadline_ = Condition::Clock::now() + delay_;
  pending_.insert(file);
  ++requested_;
  if (finishing_) {
    syncPending();
    return;
  }
  ensureThread();
  if (first) work_.notifyOne();
}

void SyncBatcher::flush() {
  const GuardLock lock(mutex_);
  const std::uint64_t wanted = requested_;
  awaited_ = wanted;
  work_.notifyOne();
  if (!thread_.joinable()) syncPending();
  while (synced_ < wanted) progress_.wait(mutex_);
}

void SyncBatcher::finish() {
  if (::getpid() != process_) return;
  const GuardLock lock(mutex_);
  finishing_ = true;
  work_.notifyOne();
  std::thread ending = std::exchange(thread_, std::thread());
  mutex_.unlock();
  if (ending.joinable()) ending.join();
  mutex_.lock();
  syncPending();
}

void SyncBatcher::ensureThread() {
  if (thread_.joinable()) return;
  try {
    thread_ = startQuietThread([this] { run(); });
  } catch (const std::exception&) {
    // The next request tries again.
  }
}

void SyncBatcher::run() {
  const GuardLock lock(mutex_);
  while (true) {
    while (!finishing_ && pending_.empty()) work_.wait(mutex_);
    if (pending_.empty()) return;
    while (!finishing_ && synced_ >= awaited_ && work_.waitUntil(mutex_, deadline_)) {
    }
    syncPending();
  }
}

/// False when there was not the memory for it.
bool SyncBatcher::sync(const Files& files) const {
  try {
    action_(files);
    return true;
  } catch (...) {
    return false;
  }
}

void SyncBatcher::syncPending() {
  Files files = std::exchange(pending_, {});
  taken_ = requested_;
  ++syncing_;
  mutex_.unlock();
  const bool hasSynced = files.empty() || sync(files);
  mutex_.lock();
  if (!hasSynced && !finishing_) {
    pending_.merge(files);  // which needs no memory
    deadline_ = Condition::Clock::now() + delay_;
  }
  if (--syncing_ > 0) return;  // another thread may still be syncing earlier requests
  synced_ = taken_;
  progress_.notifyAll();
}

}  // namespace playerx
