#include "playerx/platform/FileSync.h"

#include <fcntl.h>

#include <cstdlib>

#include "playerx/platform/Descriptor.h"
#include "playerx/platform/GuardMutex.h"
#include "playerx/platform/ReplacementFile.h"
#include "playerx/platform/SyncBatcher.h"

namespace playerx {
namespace {

namespace fs = std::filesystem;

// With the content of files and folders on their way, a power cut takes back one second at most.
constexpr auto kGathering = std::chrono::milliseconds(500);

void syncPath(const fs::path& path, int flags) {
  const Descriptor file(::open(path.c_str(), flags | O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file) ::fsync(file.get());
}

// Once per name is enough: whoever wrote before this process began has left by now or lives.
bool isFirstOfItsName(const fs::path& file) {
  static GuardMutex mutex;
  static SyncBatcher::Files& seen = *new SyncBatcher::Files;  // outlives the syncing at process end
  const GuardLock lock(mutex);
  return seen.insert(file).second;
}

void syncToDisk(const SyncBatcher::Files& files) {
  SyncBatcher::Files folders;
  for (const fs::path& file : files) {
    syncPath(file, 0);
    folders.insert(file.parent_path());
  }
  for (const fs::path& folder : folders) syncPath(folder, O_DIRECTORY);
  for (const fs::path& file : files) {
    if (isFirstOfItsName(file)) removeLeftovers(file);
  }
}

// Never destroyed: files may still be closed by destructors that run late in the process.
SyncBatcher& batcher() {
  static SyncBatcher& instance = []() -> SyncBatcher& {
    auto* made = new SyncBatcher(syncToDisk, kGathering);
    std::atexit([] { batcher().finish(); });
    return *made;
  }();
  return instance;
}

}  // namespace

void syncSoon(const fs::path& file) { batcher().request(fs::absolute(file)); }

void flushFileSyncs() { batcher().flush(); }

void syncFolderOf(const fs::path& file) { syncPath(fs::absolute(file).parent_path(), O_DIRECTORY); }

}  // namespace playerx
