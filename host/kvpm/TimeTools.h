#pragma once

#include <cstdint>

namespace kvpm {

/// The clock and the waits of the platform. All operations are static and may be called from any
/// thread.
class TimeTools {
 public:
  TimeTools() = delete;

  /// Ticks since a fixed moment in the past; never goes back while the process lives, and is above
  /// 0 from the first call on.
  static std::int64_t getTime();

  /// Ticks of `getTime` in one second; constant, above 0.
  static std::int64_t getTimeScale();

  /// Blocks the calling thread for at least `milliseconds`.
  static void sleep(std::uint32_t milliseconds);
};

}  // namespace kvpm
