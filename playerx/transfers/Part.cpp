#include "playerx/transfers/Part.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <string_view>
#include <utility>

#include "playerx/platform/BootId.h"
#include "playerx/platform/ReplacementFile.h"
#include "playerx/transfers/SmallFile.h"

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

// Where locks do not work nobody can be kept out, and nobody is.
bool isHeldByAnother(int file) {
  while (::flock(file, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EINTR) return errno == EWOULDBLOCK;
  }
  return false;
}

Descriptor openBytes(const fs::path& name, int& error) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  Descriptor file(::open(name.c_str(), kFlags, 0666));
  error = file ? 0 : errno;
  return file;
}

// The bytes that may be believed: none without an accepted response, and after a power cut only
// those that were on the disk.
std::uint64_t usableSize(const PartState& state, std::uint64_t size) {
  if (state.isComplete()) return size;
  if (!state.answered || (state.total && size > *state.total)) return 0;
  return state.boot == bootId() ? size : std::min(size, state.durable);
}

}  // namespace

std::unique_ptr<Part> Part::claim(const PartPaths& paths, int& error) {
  Descriptor file = openBytes(paths.bytes(), error);
  if (!file || isHeldByAnother(file.get())) return nullptr;
  const auto status = statOf(file.get());
  if (!status || !hasName(*status, paths.bytes())) return nullptr;
  if (!S_ISREG(status->st_mode)) return nullptr;
  removeLeftovers(paths.state());
  const std::optional<PartState> kept = readState(readSmallFile(paths.state()));
  const PartState state = kept.value_or(PartState{});
  const auto size = static_cast<std::uint64_t>(status->st_size);
  const std::uint64_t usable = usableSize(state, size);
  std::unique_ptr<Part> part(new Part(paths, std::move(file), usable, state, !kept));
  if (usable < size && (error = part->file_.cut(usable)) != 0) return nullptr;
  return part;
}

Part::Part(PartPaths paths, Descriptor file, std::uint64_t size, PartState state, bool isNew)
    : paths_(std::move(paths)),
      isNew_(isNew),
      file_(std::move(file), size),
      state_(std::move(state)) {}

Part::~Part() {
  const PartState state = this->state();
  if (state.isComplete()) {
    leaveComplete(state);
  } else {
    leavePartial();
  }
}

void Part::leaveComplete(const PartState& state) {
  const bool isNeeded = !isPlaced_ && state.size > 0 && file_.size() == state.size;
  if (isNeeded) return file_.giveBack();
  const auto status = statOf(file_.descriptor());
  if (status && hasName(*status, paths_.bytes())) ::unlink(paths_.bytes().c_str());
}

void Part::leavePartial() {
  if (file_.flush() != 0) errno = 0;
  if (file_.size() == 0) return removeFiles();
  file_.giveBack();
  if (state().durable < file_.size()) makeDurable(mark());
}

// The bytes go last: as long as they are there, nobody else can claim the other two.
void Part::removeFiles() {
  ::unlink(paths_.rights().c_str());
  ::unlink(paths_.state().c_str());
  ::unlink(paths_.bytes().c_str());
}

PartState Part::state() const {
  const GuardLock lock(mutex_);
  return state_;
}

PartFacts Part::facts() const {
  const PartState state = this->state();
  return {file_.size(), state.total, state.validator};
}

std::uint64_t Part::inode() const {
  const auto status = statOf(file_.descriptor());
  return status ? status->st_ino : 0;
}

int Part::change(const std::function<void(PartState&)>& apply) {
  const GuardLock lock(mutex_);
  apply(state_);
  return replaceSmallFile(paths_.state(), writeState(state_));
}

int Part::newVersion(const std::function<void(PartState&)>& apply) {
  if (const int error = file_.cut(0); error != 0) return error;
  const GuardLock lock(mutex_);
  ++version_;
  PartState fresh;
  fresh.address = state_.address;
  fresh.place = state_.place;
  fresh.boot = bootId();
  apply(fresh);
  state_ = fresh;
  return replaceSmallFile(paths_.state(), writeState(state_));
}

int Part::adopt(const std::string& address, const std::string& place) {
  const auto apply = [&](PartState& state) {
    state.address = address;
    state.place = place;
    state.noted = false;
    state.boot = bootId();
  };
  if (!isNew_) return change(apply);
  const GuardLock lock(mutex_);
  apply(state_);
  return 0;
}

int Part::beginVersion(const Validator& validator, std::optional<std::uint64_t> total) {
  return newVersion([&](PartState& state) {
    state.answered = true;
    state.validator = validator;
    state.total = total;
  });
}

int Part::forgetCompletion() {
  return newVersion([](PartState&) {});
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
  return replaceSmallFile(paths_.state(), writeState(state_));
}

int Part::keepRights(const std::vector<unsigned char>& rights) {
  const std::string_view content(reinterpret_cast<const char*>(rights.data()), rights.size());
  return replaceSmallFile(paths_.rights(), content);
}

int Part::announceMove(const std::string& target, const std::string& source,
                       const std::string& wished, std::uint64_t size, std::uint64_t inode) {
  const auto apply = [&](PartState& state) {
    state.target = target;
    state.source = source;
    state.wished = wished;
    state.size = size;
    state.inode = inode;
  };
  return change(apply);
}

int Part::noteCompletion() {
  return change([](PartState& state) { state.noted = true; });
}

}  // namespace playerx::transfers
