#pragma once

#include <chrono>
#include <cstdint>
#include <deque>

namespace playerx::transfers {

/// Average speed of the last few seconds. Time comes from the caller and never goes back.
class SpeedWindow {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// `bytes` are there at `now`. Fewer than before begin a new measurement.
  void feed(Time now, std::uint64_t bytes);

  /// Bytes per second up to `now`; 0 before two measurements and when nothing came lately.
  std::uint64_t bytesPerSecond(Time now) const;

 private:
  struct Sample {
    Time time;
    std::uint64_t bytes;
  };
  std::deque<Sample> samples_;
};

}  // namespace playerx::transfers
