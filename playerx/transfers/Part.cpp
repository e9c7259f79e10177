#include "playerx/transfers/Part.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string_view>
#include <utility>

#include "playerx/platform/FileIo.h"
#include "playerx/platform/HiddenFile.h"
#include "playerx/transfers/Address.h"

namespace playerx::transfers {
namespace {

namespace fs = std::filesystem;

std::optional<struct stat> statOf(int file) {
  struct stat status {};
  if (::fstat(file, &status) != 0) return std::nullopt;
  return status;
}

bool hasName(const struct stat& file, const fs::path& name) {
  struct stat named {};
  return ::lstat(name.c_str(), &named) == 0 && named.st_ino == file.st_ino &&
         named.st_dev == file.st_dev;
}

// A file system without locks cannot keep another process out.
bool isLockedByAnother(int file) {
  while (::flock(file, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EINTR) return errno == EWOULDBLOCK;
  }
  return false;
}

// Where the process died while it wrote the first state, there is a partial and no state.
Descriptor openBytes(const PartPaths& paths, int& error) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  Descriptor file(::open(paths.bytes().c_str(), kFlags | O_EXCL, kOwnerOnly));
  if (!file && errno == EEXIST) {
    file = Descriptor(::open(paths.bytes().c_str(), kFlags, kOwnerOnly));
    removeLeftovers(paths.state());
  }
  error = file ? 0 : errno;
  return file;
}

// Whether writing would change a file of another name as well, such as that of a backup by hard
// links. A whole film is only moved.
bool isShared(const struct stat& status, const fs::path& bytes) {
  if (status.st_nlink <= 1) return false;
  const std::optional<FilmMark> mark = readMark(bytes);
  return !mark || !isWhole(*mark, bytes);
}

// Has a copy take the place of the bytes. Returns 0 or an error number.
int replaceByCopy(const fs::path& bytes, int file) {
  removeLeftovers(bytes);
  int error = 0;
  HiddenFile copy = HiddenFile::create(bytes, error);
  if (error == 0) error = copyRest(file, copy.descriptor());
  return error == 0 ? copy.replace(bytes) : error;
}

// The umask itself can only be read by changing it.
mode_t readDefaultMode() {
  constexpr std::string_view kField = "Umask:";
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (!line.starts_with(kField)) continue;
    return 0666U & ~static_cast<mode_t>(std::strtoul(line.c_str() + kField.size(), nullptr, 8));
  }
  return 0644;
}

// A film is a file like others; only while it arrives it is the user's alone.
void openToOthers(int file) {
  static const mode_t mode = readDefaultMode();
  setPermissions(file, mode);
}

// How many bytes may be believed: 0 without an accepted response, and after a power cut only those
// that were on the disk.
std::uint64_t usableSize(const PartState& state, std::uint64_t size) {
  if (!state.answered || (state.total && size > *state.total)) return 0;
  return state.boot == currentBoot() ? size : std::min(size, state.durable);
}

}  // namespace

PartPaths numberedPart(const fs::path& folder, const std::string& key, unsigned number) {
  return {folder, number == 1 ? key : key + "-" + std::to_string(number)};
}

std::string placeOfKey(const std::string& key) { return key.substr(0, key.find('-')); }

std::unique_ptr<Part> Part::claim(const PartPaths& paths, int& error) {
  Descriptor file = openBytes(paths, error);
  if (!file || isLockedByAnother(file.get())) return nullptr;
  const auto status = statOf(file.get());
  if (!status || !hasName(*status, paths.bytes()) || !S_ISREG(status->st_mode)) return nullptr;
  if (isShared(*status, paths.bytes())) {
    error = replaceByCopy(paths.bytes(), file.get());
    return error == 0 ? claim(paths, error) : nullptr;
  }
  const auto size = static_cast<std::uint64_t>(status->st_size);
  std::unique_ptr<Part> part(new Part(paths, std::move(file), size));
  part->adoptKept(loadState(paths.state()),
                  size > 0 ? readMark(paths.bytes()) : std::optional<FilmMark>());
  const std::uint64_t usable = part->isWhole_ ? size : usableSize(part->state(), size);
  if (usable < size && (error = part->file_.cut(usable)) != 0) return nullptr;
  return part;
}

Part::Part(PartPaths paths, Descriptor file, std::uint64_t size)
    : paths_(std::move(paths)), file_(std::move(file), size) {}

void Part::adoptKept(const std::optional<PartState>& kept, const std::optional<FilmMark>& mark) {
  isWhole_ = mark && transfers::isWhole(*mark, paths_.bytes());
  isNew_ = !kept && !isWhole_;
  if (mark && !isWhole_) removeMark(paths_.bytes());
  if (!kept) return;
  const GuardLock lock(mutex_);
  state_ = *kept;
  isSaved_ = true;
}

Part::~Part() {
  if (!isPlaced_ && !isWhole_) leavePartial();
}

void Part::leavePartial() {
  if (file_.flush() != 0) errno = 0;
  if (file_.size() == 0) {
    // The bytes go last: while they are there, no other session can claim the state.
    deleteState();
    ::unlink(paths_.bytes().c_str());
    return;
  }
  file_.releaseReserve();
  if (state().durable < file_.size() || !isSaved()) makeDurable(mark());
}

void Part::deleteState() {
  const GuardLock lock(mutex_);
  if (std::exchange(isSaved_, false)) ::unlink(paths_.state().c_str());
}

PartState Part::state() const {
  const GuardLock lock(mutex_);
  return state_;
}

PartFacts Part::facts() const {
  const PartState state = this->state();
  return {file_.size(), state.total, state.validator};
}

bool Part::isSaved() const {
  const GuardLock lock(mutex_);
  return isSaved_;
}

int Part::store() {
  const int error = storeState(paths_.state(), state_);
  if (error == 0) isSaved_ = true;
  return error;
}

int Part::save() {
  const GuardLock lock(mutex_);
  return isSaved_ ? 0 : store();
}

int Part::change(const std::function<void(PartState&)>& apply) {
  const GuardLock lock(mutex_);
  apply(state_);
  return isSaved_ ? store() : 0;
}

int Part::adopt(const Address& address) {
  return change([&](PartState& state) {
    state.address = address.remembered;
    state.place = address.place;
    state.boot = currentBoot();
  });
}

int Part::beginVersion(const Validator& validator, std::optional<std::uint64_t> total) {
  if (const int error = file_.cut(0); error != 0) return error;
  const GuardLock lock(mutex_);
  ++version_;
  state_ = {state_.address, state_.place, true, total, validator, 0, currentBoot()};
  return isSaved_ || total > kLargeFilm ? store() : 0;
}

void Part::drop() {
  isWhole_ = false;
  if (file_.cut(0) != 0) errno = 0;
}

int Part::learnTotal(std::uint64_t total) {
  return change([&](PartState& state) { state.total = total; });
}

Part::Mark Part::mark() const {
  const GuardLock lock(mutex_);
  return {file_.size(), version_};
}

int Part::makeDurable(const Mark& mark) {
  if (const int error = file_.sync(); error != 0) return error;
  const GuardLock lock(mutex_);
  if (mark.version != version_) return 0;
  state_.durable = std::max(state_.durable, mark.bytes);
  return store();
}

FilmMark Part::filmMark() const {
  const GuardLock lock(mutex_);
  return {digestOf(state_.place), digestOf(state_.address), file_.size(),
          isSaved_ ? std::string() : currentBoot()};
}

int Part::finish() {
  if (isWhole_) return 0;
  if (const int error = file_.flush(); error != 0) return error;
  file_.releaseReserve();
  openToOthers(file_.descriptor());
  if (const int error = file_.sync(); error != 0) return error;
  isWhole_ = writeMark(file_.descriptor(), filmMark()) == 0;
  if (isWhole_) deleteState();
  return 0;
}

void Part::placed() {
  isPlaced_ = true;
  deleteState();
  // A copy leaves the bytes behind.
  const auto status = statOf(file_.descriptor());
  if (status && hasName(*status, paths_.bytes())) ::unlink(paths_.bytes().c_str());
}

}  // namespace playerx::transfers
