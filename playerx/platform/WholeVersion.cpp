#include "playerx/platform/WholeVersion.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <optional>
#include <utility>

#include "playerx/platform/BlockHashes.h"
#include "playerx/platform/HiddenFile.h"
#include "playerx/platform/NativePath.h"
#include "playerx/platform/Rename.h"
#include "playerx/platform/VersionRecord.h"

namespace playerx {
namespace {

namespace fs = std::filesystem;

Descriptor openToRead(const fs::path& path, int waiting) {
  Descriptor file;
  do {
    file = Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | waiting));
  } while (!file && errno == EINTR);
  return file;
}

// Does not wait for the writer of a pipe, but for one who leases the file for the moment of a
// change (`FileVersions::replaceBlock`).
Descriptor openPatiently(const fs::path& path) {
  Descriptor file = openToRead(path, O_NONBLOCK);
  if (!file && errno == EWOULDBLOCK) file = openToRead(path, 0);  // a pipe cannot be leased
  return file;
}

Descriptor openAsItIs(const fs::path& path, int& error) {
  Descriptor file = openPatiently(path);
  struct stat status {};
  const bool known = file && ::fstat(file.get(), &status) == 0;
  error = known ? 0 : errno;
  if (known && S_ISDIR(status.st_mode)) error = EISDIR;
  if (error != 0) return {};
  ::fcntl(file.get(), F_SETFL, 0);
  return file;
}

struct Candidate {
  Descriptor file;
  fs::path name;
  std::uint64_t sequence = 0;
};

// Stores the error of a version that cannot be read now: choosing an older one would lose content.
void prefer(Candidate& best, const fs::path& name, int& error) {
  Descriptor file = openPlainFile(name);
  const auto record = file ? readRecord(file.get()) : std::nullopt;
  if (error != 0 || !record || record->sequence < best.sequence ||
      (record->flags & VersionRecord::kReliesOnOthers) != 0)
    return;
  const auto hash = hashOfFile(file.get(), record->seed, error);
  if (hash && *hash == record->hash) best = {std::move(file), name, record->sequence};
}

Descriptor openNewestHidden(const fs::path& target, int& error) {
  Candidate best;
  forEachHiddenFile(target, [&](const fs::path& name) { prefer(best, name, error); });
  if (error == 0 && !best.file) error = ENOENT;
  if (error != 0) return {};
  // For readers that open the file by its name. A failure is harmless here.
  exchangeNames(best.name, target);
  return std::move(best.file);
}

Descriptor recover(const fs::path& target, int& error) {
  // Another reader may be recovering the file. Closing the folder releases the lock.
  const Descriptor folder(::open((target.parent_path() / ".").c_str(), O_RDONLY | O_CLOEXEC));
  ::flock(folder.get(), LOCK_EX);
  Descriptor file = openAsItIs(target, error);
  if (!file) return file;
  const Integrity integrity = integrityOf(file.get(), error);
  if (error != 0) return {};
  if (integrity == Integrity::kWhole) return file;
  Descriptor hidden = openNewestHidden(target, error);
  if (error != ENOENT || integrity == Integrity::kTorn) return hidden;
  error = 0;
  return file;
}

}  // namespace

Descriptor openWhole(const fs::path& path, int& error) {
  Descriptor file = openAsItIs(path, error);
  if (!file) return file;
  const Integrity integrity = integrityOf(file.get(), error);
  if (error != 0) return {};
  if (integrity == Integrity::kWhole) return file;
  const fs::path target = followLinks(path, error);
  return error == 0 ? recover(target, error) : Descriptor();
}

}  // namespace playerx
