#include "playerx/platform/UnsyncedFiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <set>
#include <utility>

#include "playerx/platform/Descriptor.h"
#include "playerx/platform/GuardMutex.h"

namespace playerx {
namespace {

namespace fs = std::filesystem;
using Paths = std::set<fs::path>;

/// The files of the process that are not known to be on the disk.
struct Unsynced {
  GuardMutex syncing;  ///< locked before `mutex`, for the whole of a sync
  GuardMutex mutex;
  Paths files KVPM_GUARDED_BY(mutex);
  Paths folders KVPM_GUARDED_BY(mutex);           ///< with names that are to be synced
  bool isSyncing KVPM_GUARDED_BY(mutex) = false;  ///< what was removed from both is being synced
};

// Never destroyed: files are synced until the process ends.
Unsynced& unsynced() {
  static Unsynced& instance = *new Unsynced;
  return instance;
}

Descriptor openPath(const fs::path& path) {
  return Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
}

// The first `fsync` then flushes the disk for nearly all of them.
void startWriting(const Paths& files) {
  for (const fs::path& file : files) {
    const Descriptor opened = openPath(file);
    if (opened) ::sync_file_range(opened.get(), 0, 0, SYNC_FILE_RANGE_WRITE);
  }
}

void syncAll(const Paths& paths) {
  for (const fs::path& path : paths) {
    const Descriptor opened = openPath(path);
    if (opened) ::fsync(opened.get());
  }
}

}  // namespace

void addUnsyncedFile(const fs::path& file) {
  const GuardLock lock(unsynced().mutex);
  unsynced().files.insert(file);
  unsynced().folders.insert(file.parent_path());
}

void addUnsyncedName(const fs::path& file) {
  const GuardLock lock(unsynced().mutex);
  unsynced().folders.insert(file.parent_path());
}

bool areAllFilesOnDisk() {
  const GuardLock lock(unsynced().mutex);
  return unsynced().folders.empty() && !unsynced().isSyncing;
}

void syncUnsyncedFiles() {
  const GuardLock one(unsynced().syncing);
  Paths files, folders;
  {
    const GuardLock lock(unsynced().mutex);
    files = std::exchange(unsynced().files, {});
    folders = std::exchange(unsynced().folders, {});
    unsynced().isSyncing = true;
  }
  startWriting(files);
  syncAll(files);
  syncAll(folders);
  const GuardLock lock(unsynced().mutex);
  unsynced().isSyncing = false;
}

}  // namespace playerx
