#pragma once

#include <chrono>
#include <cstdint>
#include <deque>

namespace playerx::transfers {

/// Average speed of the last few seconds, up to the moment of the question: it falls to 0 when
/// nothing comes any more. Fed at every turn of the engine, it keeps one measurement per 100 ms.
/// (`SpeedMeter` of the command line is fed with rare reports and keeps its last value between
/// them.) Time comes from the caller and never goes back. Not synchronised.
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
