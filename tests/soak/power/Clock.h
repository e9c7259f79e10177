#pragma once

#include <chrono>
#include <cstdint>

namespace power_test {

/// Nanoseconds of a clock that all processes share.
inline std::int64_t now() {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace power_test
