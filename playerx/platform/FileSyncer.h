#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <set>
#include <thread>

namespace playerx {

/// Gathers files that are to be synced and has them synced together on one thread of its own.
///
/// The thread starts with the first request and takes no signals. All operations may be called from
/// any thread; the lock is never held while files are synced. Does not throw: without a thread to
/// be had, files wait for the next request, `flush` or `finish`.
class FileSyncer {
 public:
  using Files = std::set<std::filesystem::path>;
  using Action = std::function<void(const Files&)>;

  /// `action` syncs the files it is given; it may be called on several threads at once. A file is
  /// given to it at most `gathering` after its request, once the action before has returned.
  FileSyncer(Action action, std::chrono::milliseconds gathering);
  FileSyncer(const FileSyncer&) = delete;
  FileSyncer& operator=(const FileSyncer&) = delete;

  /// Calls `finish`.
  ~FileSyncer();

  /// Does not wait for a sync, unless `finish` was called: then the file is synced at once.
  void request(const std::filesystem::path& file);

  /// Returns when everything requested before is synced, without gathering any longer.
  void flush();

  /// Flushes and ends the thread. In a child process, which has none, it does nothing.
  void finish();

 private:
  using Lock = std::unique_lock<std::mutex>;

  void ensureThread();
  void run();
  void syncPending(Lock& lock);

  const Action action_;
  const std::chrono::milliseconds gathering_;
  const int process_;

  std::mutex mutex_;
  std::condition_variable work_;
  std::condition_variable progress_;
  // Guarded by mutex_.
  Files pending_;
  std::uint64_t requested_ = 0;
  std::uint64_t synced_ = 0;  // requests up to this one are done
  int flushing_ = 0;
  bool finishing_ = false;
  std::thread thread_;
};

}  // namespace playerx
