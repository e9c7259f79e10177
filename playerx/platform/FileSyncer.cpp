#include "playerx/platform/FileSyncer.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <system_error>
#include <utility>

namespace playerx {
namespace {

// Threads started meanwhile take no signals: those of the process belong to the player.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_;
};

}  // namespace

FileSyncer::FileSyncer(Action action, std::chrono::milliseconds gathering)
    : action_(std::move(action)), gathering_(gathering), process_(::getpid()) {}

FileSyncer::~FileSyncer() { finish(); }

void FileSyncer::request(const std::filesystem::path& file) {
  Lock lock(mutex_);
  const bool first = pending_.empty();
  pending_.insert(file);
  ++requested_;
  if (finishing_) {
    syncPending(lock);
    return;
  }
  ensureThread();
  if (first) work_.notify_one();
}

void FileSyncer::flush() {
  Lock lock(mutex_);
  if (!thread_.joinable()) {
    syncPending(lock);
    return;
  }
  const std::uint64_t wanted = requested_;
  ++flushing_;
  work_.notify_one();
  progress_.wait(lock, [this, wanted] { return synced_ >= wanted; });
  --flushing_;
}

void FileSyncer::finish() {
  if (::getpid() != process_) return;
  Lock lock(mutex_);
  finishing_ = true;
  work_.notify_one();
  std::thread ending = std::exchange(thread_, std::thread());
  lock.unlock();
  if (ending.joinable()) ending.join();
  lock.lock();
  syncPending(lock);
}

void FileSyncer::ensureThread() {
  if (thread_.joinable()) return;
  const SignalsBlocked blocked;
  try {
    thread_ = std::thread([this] { run(); });
  } catch (const std::system_error&) {
    // None to be had now; the next request tries again.
  }
}

void FileSyncer::run() {
  Lock lock(mutex_);
  while (true) {
    work_.wait(lock, [this] { return finishing_ || !pending_.empty(); });
    if (pending_.empty()) return;
    work_.wait_for(lock, gathering_, [this] { return finishing_ || flushing_ > 0; });
    syncPending(lock);
  }
}

void FileSyncer::syncPending(Lock& lock) {
  const std::uint64_t upTo = requested_;
  const Files files = std::exchange(pending_, {});
  lock.unlock();
  if (!files.empty()) action_(files);
  lock.lock();
  synced_ = std::max(synced_, upTo);
  progress_.notify_all();
}

}  // namespace playerx
