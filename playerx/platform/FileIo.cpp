#include "playerx/platform/FileIo.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

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

}  // namespace

IoResult readFully(int file, void* buffer, std::size_t length) {
  return moveFully(length, [&](std::size_t at, std::size_t count) {
    return ::read(file, static_cast<char*>(buffer) + at, count);
  });
}

IoResult writeFully(int file, const void* buffer, std::size_t length) {
  IoResult result = moveFully(length, [&](std::size_t at, std::size_t count) {
    return ::write(file, static_cast<const char*>(buffer) + at, count);
  });
  if (result.error == 0 && result.bytes < length) result.error = ENOSPC;
  return result;
}

}  // namespace playerx
