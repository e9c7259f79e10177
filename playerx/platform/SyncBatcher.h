#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <set>
#include <thread>

#include "playerx/platform/GuardMutex.h"

namespace playerx {

/// Collects files to be synced and syncs them in batches on a thread of its own. `FileSync.h` owns
/// the instance of the process.
///
/// The thread starts with the first request and blocks all signals. All operations may be called
/// from any thread; no lock is held while files are synced. When no thread can be started, files
/// wait for the next request, `flush` or `finish`; when there is no memory for a sync, for another
/// delay, and what waits for it goes on.
class SyncBatcher {
 public:
  using Files = std::set<std::filesystem::path>;
  using Action = std::function<void(const Files&)>;

  /// `action` syncs the files it is given; it may be called on several threads at once. A file is
  /// given to it at most `delay` after its request, once the action before has returned.
  SyncBatcher(Action action, std::chrono::milliseconds delay);
  SyncBatcher(const SyncBatcher&) = delete;
  SyncBatcher& operator=(const SyncBatcher&) = delete;

  /// Calls `finish`.
  ~SyncBatcher();

  /// Does not wait for a sync, unless `finish` was called: then the file is synced at once.
  void request(const std::filesystem::path& file);

  /// Returns when everything requested before is synced, without the rest of the delay.
  void flush();

  /// Flushes and ends the thread. Does nothing in a forked child, which has no such thread.
  void finish();

 private:
  void ensureThread() KVPM_REQUIRES(mutex_);
  void run();
  bool sync(const Files& files) const;
  void syncPending() KVPM_REQUIRES(mutex_);

  const Action action_;
  const std::chrono::milliseconds delay_;
  const int process_;

  GuardMutex mutex_;
  Condition work_;
  Condition progress_;
  Files pending_ KVPM_GUARDED_BY(mutex_);
  Condition::Clock::time_point deadline_ KVPM_GUARDED_BY(mutex_);  // of the pending files
  std::uint64_t requested_ KVPM_GUARDED_BY(mutex_) = 0;
  std::uint64_t taken_ KVPM_GUARDED_BY(mutex_) = 0;    // requests up to this one are being done
  std::uint64_t synced_ KVPM_GUARDED_BY(mutex_) = 0;   // requests up to this one are done
  std::uint64_t awaited_ KVPM_GUARDED_BY(mutex_) = 0;  // requests up to this one are waited for
  int syncing_ KVPM_GUARDED_BY(mutex_) = 0;            // actions that run at this moment
  bool finishing_ KVPM_GUARDED_BY(mutex_) = false;
  std::thread thread_ KVPM_GUARDED_BY(mutex_);
};

}  // namespace playerx
