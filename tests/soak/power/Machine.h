#pragma once

#include <chrono>
#include <cstdint>

namespace power_test {

/// Nanoseconds of a clock that all processes share.
inline std::int64_t now() {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// What a file system writes at once, in bytes: eight sectors, each of which a disk writes whole or
/// not at all.
inline constexpr std::uint64_t kBlock = 4096;

}  // namespace power_test
