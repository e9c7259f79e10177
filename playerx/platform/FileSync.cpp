#include "playerx/platform/FileSync.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>

#include "playerx/platform/Descriptor.h"
#include "playerx/platform/ReplacementFile.h"

namespace playerx {
namespace {

namespace fs = std::filesystem;

constexpr auto kGathering = std::chrono::milliseconds(500);

void syncPath(const fs::path& path, int flags) {
  const Descriptor file(::open(path.c_str(), flags | O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file) ::fsync(file.get());
}

void syncAll(const std::set<fs::path>& files) {
  std::set<fs::path> folders;
  for (const fs::path& file : files) {
    syncPath(file, 0);
    folders.insert(file.parent_path());
  }
  for (const fs::path& folder : folders) syncPath(folder, O_DIRECTORY);
}

// The signals of the process belong to the player: this thread takes none.
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

/// The one background thread and what it has to do. Its lock is never held while the disk works.
class Syncer {
 public:
  void request(const fs::path& file);
  void flush();
  void finish();

 private:
  void ensureThread();
  void run();
  void syncPending(std::unique_lock<std::mutex>& lock);

  const pid_t process_ = ::getpid();

  std::mutex mutex_;
  std::condition_variable work_;
  std::condition_variable progress_;
  // Guarded by mutex_.
  std::set<fs::path> pending_;
  std::set<fs::path> tidied_;
  std::uint64_t requested_ = 0;
  std::uint64_t synced_ = 0;
  int hurried_ = 0;
  bool ending_ = false;
  std::thread thread_;
};

void Syncer::request(const fs::path& file) {
  std::unique_lock lock(mutex_);
  const bool first = pending_.empty();
  pending_.insert(file);
  ++requested_;
  if (ending_) {
    syncPending(lock);
    return;
  }
  ensureThread();
  if (first) work_.notify_one();
}

void Syncer::flush() {
  std::unique_lock lock(mutex_);
  const std::uint64_t wanted = requested_;
  if (!thread_.joinable()) {
    syncPending(lock);
    return;
  }
  ++hurried_;
  work_.notify_one();
  progress_.wait(lock, [&] { return synced_ >= wanted; });
  --hurried_;
}

void Syncer::finish() {
  // A child process has the object but not the thread; its parent does the work.
  if (::getpid() != process_) return;
  std::unique_lock lock(mutex_);
  ending_ = true;
  work_.notify_one();
  std::thread thread = std::move(thread_);
  lock.unlock();
  if (thread.joinable()) thread.join();
  lock.lock();
  syncPending(lock);
}

void Syncer::ensureThread() {
  if (thread_.joinable()) return;
  const SignalsBlocked blocked;
  try {
    thread_ = std::thread([this] { run(); });
  } catch (const std::system_error&) {
    // No thread to be had now: the next request tries again.
  }
}

void Syncer::run() {
  std::unique_lock lock(mutex_);
  while (true) {
    work_.wait(lock, [this] { return ending_ || !pending_.empty(); });
    if (pending_.empty()) return;
    work_.wait_for(lock, kGathering, [this] { return ending_ || hurried_ > 0; });
    syncPending(lock);
  }
}

void Syncer::syncPending(std::unique_lock<std::mutex>& lock) {
  const std::uint64_t upTo = requested_;
  const std::set<fs::path> files = std::exchange(pending_, {});
  std::set<fs::path> untidied;
  for (const fs::path& file : files) {
    if (tidied_.insert(file).second) untidied.insert(file);
  }
  lock.unlock();
  syncAll(files);
  for (const fs::path& file : untidied) removeLeftovers(file);
  lock.lock();
  synced_ = std::max(synced_, upTo);
  progress_.notify_all();
}

// Never destroyed: files may still be closed by destructors that run late in the process.
Syncer& syncer() {
  static Syncer& instance = []() -> Syncer& {
    auto* made = new Syncer;
    std::atexit([] { syncer().finish(); });
    return *made;
  }();
  return instance;
}

}  // namespace

void syncSoon(const fs::path& file) { syncer().request(fs::absolute(file)); }

void flushFileSyncs() { syncer().flush(); }

void syncFolderOf(const fs::path& file) { syncPath(fs::absolute(file).parent_path(), O_DIRECTORY); }

}  // namespace playerx
