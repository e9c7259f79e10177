#include "playerx/platform/FileIo.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "playerx/platform/Descriptor.h"

namespace playerx {
namespace {

// The system moves at most this many bytes in one call.
constexpr std::size_t kMostBytes = 0x7FFFF000;

// Repeats `step(offset, length)` until everything is moved, nothing more moves, or it fails.
template <class Step>
IoResult moveFully(std::size_t length, Step step) {
  IoResult result;
  while (result.bytes < length) {
    const ssize_t moved = step(result.bytes, std::min(length - result.bytes, kMostBytes));
    if (moved < 0 && errno == EINTR) continue;
    if (moved < 0) result.error = errno;
    if (moved <= 0) break;
    result.bytes += static_cast<std::size_t>(moved);
  }
  return result;
}

std::int64_t signedSize(std::size_t size) { return static_cast<std::int64_t>(size); }

// A write that stops short without an error means a full disk.
IoResult orNoSpace(std::size_t length, IoResult result) {
  if (result.error == 0 && result.bytes < length) result.error = ENOSPC;
  return result;
}

}  // namespace

IoResult readFully(int file, void* buffer, std::size_t length) {
  return moveFully(length, [&](std::size_t at, std::size_t count) {
    return ::read(file, static_cast<char*>(buffer) + at, count);
  });
}

IoResult readFullyAt(int file, void* buffer, std::size_t length, std::int64_t position) {
  return moveFully(length, [&](std::size_t at, std::size_t count) {
    return ::pread(file, static_cast<char*>(buffer) + at, count, position + signedSize(at));
  });
}

IoResult writeFully(int file, const void* buffer, std::size_t length) {
  return orNoSpace(length, moveFully(length, [&](std::size_t at, std::size_t count) {
                     return ::write(file, static_cast<const char*>(buffer) + at, count);
                   }));
}

IoResult writeFullyAt(int file, const void* buffer, std::size_t length, std::int64_t position) {
  return orNoSpace(length, moveFully(length, [&](std::size_t at, std::size_t count) {
                     return ::pwrite(file, static_cast<const char*>(buffer) + at, count,
                                     position + signedSize(at));
                   }));
}

int copyRest(int from, int to, const std::atomic<bool>& isCancelled) {
  std::vector<char> buffer(std::size_t{1} << 20U);
  while (!isCancelled) {
    const IoResult got = readFully(from, buffer.data(), buffer.size());
    if (got.error != 0 || got.bytes == 0) return got.error;
    const IoResult put = writeFully(to, buffer.data(), got.bytes);
    if (put.error != 0) return put.error;
  }
  return ECANCELED;
}

void setPermissions(int file, mode_t mode) {
  if (::fchmod(file, mode) != 0) errno = 0;
}

int syncFolderOf(const std::filesystem::path& file) {
  const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : ".";
  const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!opened) return errno;
  return ::fsync(opened.get()) == 0 ? 0 : errno;
}

}  // namespace playerx
