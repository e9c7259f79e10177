#include "playerx/platform/FileSync.h"

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <map>
#include <system_error>

#include "playerx/platform/FileVersions.h"
#include "playerx/platform/GuardMutex.h"
#include "playerx/platform/SyncBatcher.h"
#include "playerx/platform/UnsyncedFiles.h"

namespace playerx {
namespace {

namespace fs = std::filesystem;

// Together with twice the time that a sync takes, a power cut undoes the last second at most.
constexpr auto kSyncDelay = std::chrono::milliseconds(250);

// Each costs a few descriptors; beyond this number, files that are on the disk release theirs.
constexpr std::size_t kMostFiles = 16;

/// The files of one process. A forked child has its own, because it must not overwrite the spares
/// of its parent.
class SavedFiles {
 public:
  using Versions = std::shared_ptr<FileVersions>;

  const pid_t process = ::getpid();

  Versions find(const fs::path& file) {
    const GuardLock lock(mutex_);
    const auto found = files_.find(file);
    return found == files_.end() ? nullptr : found->second;
  }

  Versions findOrAdd(const fs::path& file) {
    const GuardLock lock(mutex_);
    const auto found = files_.find(file);
    if (found != files_.end()) return found->second;
    if (files_.size() >= kMostFiles) releaseAll();
    return files_.emplace(file, std::make_shared<FileVersions>(file)).first->second;
  }

  void release() {
    const GuardLock lock(mutex_);
    releaseAll();
  }

 private:
  void releaseAll() KVPM_REQUIRES(mutex_) {
    std::erase_if(files_, [](const auto& entry) { return entry.second->release(); });
  }

  GuardMutex mutex_;
  std::map<fs::path, Versions> files_ KVPM_GUARDED_BY(mutex_);
};

// Never destroyed: files may still be closed by destructors that run late in the process.
SavedFiles& savedFiles() {
  static std::atomic<SavedFiles*> instance{new SavedFiles};
  SavedFiles* present = instance;
  if (present->process == ::getpid()) return *present;
  auto* own = new SavedFiles;
  return instance.compare_exchange_strong(present, own) ? *own : *present;
}

std::atomic<bool> isEnding{false};

void syncToDisk(const SyncBatcher::Files& files) {
  for (const fs::path& file : files) {
    const auto versions = savedFiles().find(file);
    if (!versions) continue;
    if (!isEnding) versions->addSpare();
    versions->sync();
  }
  syncUnsyncedFiles();
  if (isEnding) savedFiles().release();
}

SyncBatcher& batcher() {
  static SyncBatcher& instance = []() -> SyncBatcher& {
    auto* created = new SyncBatcher(syncToDisk, kSyncDelay);
    std::atexit([] {
      isEnding = true;
      batcher().finish();
      savedFiles().release();
    });
    return *created;
  }();
  return instance;
}

fs::path absolutePath(const fs::path& file) {
  std::error_code failure;
  const fs::path absolute = fs::absolute(file, failure);
  return failure ? file : absolute;
}

}  // namespace

std::shared_ptr<FileVersions> versionsOf(const fs::path& file) {
  return savedFiles().findOrAdd(absolutePath(file));
}

int lastSaveError(const fs::path& file) {
  const auto versions = savedFiles().find(absolutePath(file));
  return versions ? versions->lastOutcome() : 0;
}

void forgetVersions(const fs::path& file) {
  if (const auto versions = savedFiles().find(absolutePath(file))) versions->forget();
  removeLeftovers(file);
}

void syncSoon(const fs::path& file) { batcher().request(absolutePath(file)); }

void syncFileSoon(const fs::path& file) {
  const fs::path path = absolutePath(file);
  addUnsyncedFile(path);
  syncSoon(path);
}

void syncNameSoon(const fs::path& file) {
  const fs::path path = absolutePath(file);
  addUnsyncedName(path);
  syncSoon(path);
}

void flushFileSyncs() { batcher().flush(); }

}  // namespace playerx
