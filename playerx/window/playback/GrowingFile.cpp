#include "playerx/window/playback/GrowingFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

namespace playerx::window {

namespace {

/// How often a waiting read looks for bytes that were not announced.
constexpr std::chrono::milliseconds kLook(100);

}  // namespace

std::shared_ptr<GrowingFile> GrowingFile::open(const std::string& path, std::uint64_t total,
                                               bool isComplete, int* error) {
  Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
  struct stat facts {};
  if (!file || fstat(file.get(), &facts) != 0) {
    *error = errno;
    return nullptr;
  }
  if (!S_ISREG(facts.st_mode)) {
    *error = S_ISDIR(facts.st_mode) ? EISDIR : EINVAL;
    return nullptr;
  }
  *error = 0;
  return std::make_shared<GrowingFile>(std::move(file), total, isComplete);
}

GrowingFile::GrowingFile(Descriptor file, std::uint64_t total, bool isComplete)
    : file_(std::move(file)), total_(total), isFinished_(isComplete) {}

std::int64_t GrowingFile::read(std::uint64_t offset, char* data, std::size_t length) {
  if (!waitBehind(offset)) return isCancelled_ || arrived() < offset ? -1 : 0;
  ssize_t count = 0;
  do {
    count = pread(file_.get(), data, length, static_cast<off_t>(offset));
  } while (count < 0 && errno == EINTR);
  return isCancelled_ ? -1 : count;
}

std::uint64_t GrowingFile::arrived() const {
  struct stat facts {};
  return fstat(file_.get(), &facts) == 0 ? static_cast<std::uint64_t>(facts.st_size) : 0;
}

std::uint64_t GrowingFile::total() const { return isFinished_ ? arrived() : total_; }

void GrowingFile::finish() {
  {
    const GuardLock lock(mutex_);
    isFinished_ = true;
  }
  changed_.notifyAll();
}

void GrowingFile::cancel() {
  {
    const GuardLock lock(mutex_);
    isCancelled_ = true;
  }
  changed_.notifyAll();
}

void GrowingFile::wake() { changed_.notifyAll(); }

/// Waits for a byte at `offset`; false when none will come.
bool GrowingFile::waitBehind(std::uint64_t offset) {
  const GuardLock lock(mutex_);
  for (;;) {
    if (isCancelled_) return false;
    // Asked before the size: what has arrived by the time of `finish` counts.
    const bool isLast = isFinished_;
    const std::uint64_t size = arrived();
    if (size > offset) return true;
    const bool isWhole = total_ > 0 && size >= total_;
    if (isLast || isWhole || size < offset) return false;
    changed_.waitUntil(mutex_, Condition::Clock::now() + kLook);
  }
}

}  // namespace playerx::window
