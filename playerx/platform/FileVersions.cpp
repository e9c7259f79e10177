#include "playerx/platform/FileVersions.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <iterator>
#include <utility>

#include "playerx/platform/FileIo.h"
#include "playerx/platform/UnsyncedFiles.h"
#include "playerx/platform/VersionRecord.h"

namespace playerx {
namespace {

namespace fs = std::filesystem;

// Four versions are in use while one is synced: that one, the last one on the disk, and two that
// are written in turn. One of the four is the present one.
constexpr std::ptrdiff_t kMostSpares = 3;

std::optional<struct stat> stateOf(int file) {
  struct stat status {};
  if (::fstat(file, &status) != 0) return std::nullopt;
  return status;
}

// Whether this is the file of a version and holds the content that this process wrote.
bool isVersion(const FileVersion& version, const struct stat& now) {
  return now.st_ino == version.inode && now.st_dev == version.device &&
         now.st_size == version.size && modificationTime(now) == version.modified;
}

void changePermissions(int file, const struct stat& status, mode_t mode) {
  if ((status.st_mode & 07777U) != mode) setPermissions(file, mode);
}

// The write lease is granted only when no other descriptor of the file is open. It is kept while
// the file is written: an `open` that looked the name up before the file was hidden waits until it
// ends. The signal to the lease holder must be one that is ignored, since the default one would end
// the process; it has to be set for every lease.
bool takeWriteLease(int file) {
  return ::fcntl(file, F_SETSIG, SIGURG) == 0 && ::fcntl(file, F_SETLEASE, F_WRLCK) == 0;
}

void releaseWriteLease(int file) {
  if (::fcntl(file, F_SETLEASE, F_UNLCK) != 0) errno = 0;
}

bool mayBeWrittenOver(const FileVersion& version, const struct stat& now,
                      const struct stat& present) {
  return isVersion(version, now) && now.st_nlink == 1 && now.st_uid == present.st_uid &&
         now.st_gid == present.st_gid;
}

bool isSpare(const std::shared_ptr<FileVersion>& hidden) {
  return !hidden->isKept && !hidden->hasFailed && hidden->isReusable;
}

void describe(FileVersion& version, const struct stat& status) {
  version.inode = status.st_ino;
  version.device = status.st_dev;
  version.size = status.st_size;
  version.modified = modificationTime(status);
}

// A spare of the same content; null when it cannot be made.
std::shared_ptr<FileVersion> copyOf(const FileVersion& version, const fs::path& target) {
  auto copy = std::make_shared<FileVersion>();
  int error = 0;
  copy->file = HiddenFile::create(target, error);
  if (error != 0 || ::lseek(version.file.descriptor(), 0, SEEK_SET) != 0) return nullptr;
  const int file = copy->file.descriptor();
  setPermissions(file, kOwnerOnly);
  const auto status = copyRest(version.file.descriptor(), file) == 0 ? stateOf(file) : std::nullopt;
  // Another program may have written to it: the blocks are those that this process wrote.
  const auto original = stateOf(version.file.descriptor());
  if (!status || !original || !isVersion(version, *original)) return nullptr;
  describe(*copy, *status);
  copy->blocks = version.blocks.fullBlocks();
  copy->isReusable = true;
  return copy;
}

template <class Change>
void changeRecord(const FileVersion& version, Change change) {
  auto record = readRecord(version.file.descriptor());
  if (!record) return;
  change(*record);
  writeRecord(version.file.descriptor(), *record);
}

}  // namespace

FileVersions::FileVersions(fs::path target) : target_(std::move(target)) {}

std::shared_ptr<FileVersion> FileVersions::begin(int& error) {
  const std::optional<struct stat> old = replaceableState(target_, error);
  if (error != 0) return nullptr;
  const GuardLock lock(mutex_);
  if (Version spare = old ? takeSpare(*old) : nullptr) return spare;
  auto made = std::make_shared<FileVersion>();
  made->file = HiddenFile::create(target_, old, error);
  made->isReusable = true;
  return error == 0 ? made : nullptr;
}

// The newest one differs least from what will be written: all that stands behind a change of length
// differs in those from before.
FileVersions::Version FileVersions::takeSpare(const struct stat& old) {
  for (auto place = hidden_.rbegin(); place != hidden_.rend(); ++place) {
    const int file = (*place)->file.descriptor();
    if (!isSpare(*place)) continue;
    const auto status = stateOf(file);
    (*place)->isReusable = status && mayBeWrittenOver(**place, *status, old);
    if (!(*place)->isReusable || !takeWriteLease(file)) continue;
    changePermissions(file, *status, old.st_mode & 07777U);
    const Version spare = *place;
    hidden_.erase(std::next(place).base());
    return spare;
  }
  return nullptr;
}

std::ptrdiff_t FileVersions::countSpares() const {
  return std::count_if(hidden_.begin(), hidden_.end(), isSpare);
}

std::optional<PresentContent> FileVersions::present() {
  struct stat now {};
  if (::lstat(target_.c_str(), &now) != 0) return std::nullopt;
  const GuardLock lock(mutex_);
  if (!present_ || !isVersion(*present_, now)) return std::nullopt;
  return PresentContent{present_->size, present_->blocks.fullBlocks()};
}

int FileVersions::publish(const Version& version) {
  releaseWriteLease(version->file.descriptor());
  struct stat old {};
  const bool isThere = ::lstat(target_.c_str(), &old) == 0;
  const GuardLock lock(mutex_);
  if (!sequence_) learnSequence();
  if (!isThere) removeDeleted();
  if (!isThere || !exchange(*version, old)) {
    if (!record(*version) || isThere) removeRecord(version->file.descriptor());
    if (const int error = version->file.replace(target_); error != 0) return error;
  }
  present_ = version;
  isPresentOnDisk_ = false;
  return 0;
}

// Only the present version is changed, which is not kept and has the hash of its old content until
// it is whole again: after a power cut the kept one stands. A full block is one copy into the
// system's memory, which a kill does not interrupt.
bool FileVersions::replaceBlock(std::size_t index, const char* bytes) {
  const GuardLock lock(mutex_);
  if (!present_ || present_->isKept || present_->hasFailed) return false;
  const int file = present_->file.descriptor();
  if (!takeWriteLease(file)) return false;
  const bool isReplaced = replaceLeasedBlock(index, bytes);
  releaseWriteLease(file);
  return isReplaced;
}

bool FileVersions::replaceLeasedBlock(std::size_t index, const char* bytes) {
  const int file = present_->file.descriptor();
  struct stat now {};
  const bool isOurs = ::lstat(target_.c_str(), &now) == 0 &&
                      mayBeWrittenOver(*present_, now, now) && now.st_uid == ::geteuid();
  auto before = isOurs ? readRecord(file) : std::nullopt;
  if (!before) return false;
  before->modified = VersionRecord::kBeingChanged;
  const auto position = static_cast<std::int64_t>(index * BlockHashes::kBlock);
  if (!writeRecord(file, *before)) return false;
  if (writeFullyAt(file, bytes, BlockHashes::kBlock, position).error != 0) return false;
  present_->blocks.replaceBlock(index, bytes);
  if (!record(*present_)) removeRecord(file);
  return true;
}

void FileVersions::giveBack(const Version& version) {
  const int file = version->file.descriptor();
  if (const auto status = stateOf(file)) {
    changePermissions(file, *status, kOwnerOnly);
    describe(*version, *status);
  }
  releaseWriteLease(file);
  const GuardLock lock(mutex_);
  const auto isOlder = [](const Version& l, const Version& r) { return l->sequence < r->sequence; };
  hidden_.insert(std::upper_bound(hidden_.begin(), hidden_.end(), version, isOlder), version);
}

// A deleted file takes its hidden versions with it: a power cut must not bring one of them back.
void FileVersions::removeDeleted() {
  hidden_.clear();
  present_.reset();
  removeLeftovers(target_);
  isNew_ = true;
}

bool FileVersions::exchange(FileVersion& version, const struct stat& old) {
  if (!S_ISREG(old.st_mode) || old.st_nlink != 1 || old.st_uid != ::geteuid()) return false;
  if (present_ && !isVersion(*present_, old)) present_.reset();
  if (!present_) recordForeign();
  const fs::path name = version.file.name();
  if (!record(version) || version.file.exchange(target_) != 0) return false;
  hidePresent(name);
  return true;
}

void FileVersions::hidePresent(const fs::path& name) {
  struct stat status {};
  const bool isThere = ::lstat(name.c_str(), &status) == 0;
  Version old = std::exchange(present_, nullptr);
  if (old && isThere && isVersion(*old, status)) {
    old->file.setName(name);
  } else {
    old = std::make_shared<FileVersion>();
    old->file = HiddenFile(openPlainFile(name), name);
    old->isKept = true;
  }
  if (isThere) changePermissions(old->file.descriptor(), status, kOwnerOnly);
  hidden_.push_back(std::move(old));
}

// Versions of dead processes keep their place in the order, except those that were never published.
void FileVersions::learnSequence() {
  const Descriptor present = openPlainFile(target_);
  const auto record = present ? readRecord(present.get()) : std::nullopt;
  std::uint64_t latest = record ? record->sequence : 0;
  forEachHiddenFile(target_, [&](const fs::path& name) {
    const Descriptor file = openPlainFile(name);
    const auto other = file ? readRecord(file.get()) : std::nullopt;
    if (!other) return;
    const bool isUnpublished = record && other->sequence > record->sequence;
    if (isUnpublished && isLeftBehind(file.get())) {
      ::unlink(name.c_str());
    } else {
      latest = std::max(latest, other->sequence);
    }
  });
  sequence_ = latest;
}

bool FileVersions::record(FileVersion& version) {
  const auto status = stateOf(version.file.descriptor());
  if (!status) return false;
  const std::uint64_t flags = (areAllFilesOnDisk() ? 0 : VersionRecord::kReliesOnOthers) |
                              (isNew_ ? VersionRecord::kIsNew : 0);
  version.sequence = ++*sequence_;
  describe(version, *status);
  return writeRecord(version.file.descriptor(),
                     {version.sequence, version.modified, presentBoot(), version.blocks.seed(),
                      version.blocks.whole(), flags});
}

// A file of another program gets its place in the order before it is hidden.
void FileVersions::recordForeign() {
  const Descriptor file = openPlainFile(target_);
  const auto status = stateOf(file.get());
  if (!status || readRecord(file.get())) return;
  int error = 0;
  const std::uint64_t seed = BlockHashes::processSeed();
  const auto hash = hashOfFile(file.get(), seed, error);
  if (!hash) return;
  writeRecord(file.get(), {++*sequence_, modificationTime(*status), presentBoot(), seed, *hash, 0});
}

void FileVersions::noteOutcome(int error) {
  const GuardLock lock(mutex_);
  lastOutcome_ = error;
}

int FileVersions::lastOutcome() {
  const GuardLock lock(mutex_);
  return lastOutcome_;
}

void FileVersions::addSpare() {
  const GuardLock one(syncing_);  // a sync lets go of what is kept
  Version version;
  {
    const GuardLock lock(mutex_);
    // A file without a spare was saved once, and may not be saved again.
    if (!present_ || isPresentOnDisk_ || countSpares() != 1) return;
    version = present_;
    version->isKept = true;  // while it is copied, as for `sync`, which comes next
  }
  Version copy = copyOf(*version, target_);
  const GuardLock lock(mutex_);
  const bool isOfUse = copy && present_ && countSpares() < kMostSpares;
  if (isOfUse) hidden_.push_back(std::move(copy));
}

int FileVersions::sync() {
  const GuardLock one(syncing_);
  Version version;
  {
    const GuardLock lock(mutex_);
    if (!present_ || isPresentOnDisk_) return 0;
    version = present_;
    version->isKept = true;
  }
  // Only now, because the version saved last may mention a file that was finished after the one
  // before. The record is changed before the sync, so that it reaches the disk with the content.
  syncUnsyncedFiles();
  changeRecord(*version, [](VersionRecord& record) { record.flags = 0; });
  int error = ::fsync(version->file.descriptor()) == 0 ? 0 : errno;
  if (error == 0) error = syncFolderOf(target_);
  {
    const GuardLock lock(mutex_);
    error = noteSync(*version, error);
  }
  if (error == 0 && !std::exchange(isTidy_, true)) removeLeftovers(target_);
  return error;
}

// The system reports a failed sync only once, so a later success proves nothing.
int FileVersions::noteSync(FileVersion& version, int error) {
  if (version.hasFailed) error = EIO;
  version.isKept = error == 0;
  version.hasFailed = error != 0;
  if (error != 0) return error;
  isNew_ = false;
  if (present_.get() == &version) isPresentOnDisk_ = true;
  changeRecord(version, [](VersionRecord& record) { record.boot = VersionRecord::kOnDisk; });
  for (const Version& hidden : hidden_) {
    if (hidden->sequence < version.sequence) hidden->isKept = false;
  }
  std::erase_if(hidden_, [](const Version& hidden) { return !hidden->isKept && !isSpare(hidden); });
  std::ptrdiff_t spares = countSpares();
  std::erase_if(hidden_, [&spares](const Version& hidden) {
    return !hidden->isKept && spares-- > kMostSpares;  // the oldest first
  });
  return 0;
}

bool FileVersions::release() {
  const GuardLock lock(mutex_);
  const auto status = present_ ? stateOf(present_->file.descriptor()) : std::nullopt;
  const bool isDeleted = !status || status->st_nlink == 0;
  if (!isDeleted && !isPresentOnDisk_) return false;
  hidden_.clear();
  if (present_) removeRecord(present_->file.descriptor());
  present_.reset();
  return true;
}

void FileVersions::forget() {
  const GuardLock lock(mutex_);
  hidden_.clear();
  present_.reset();
}

}  // namespace playerx
