#pragma once

#include <chrono>
#include <cstdint>
#include <deque>

namespace playerx::model {

/// Average speed over the last seconds of one download. Time comes from the caller.
class SpeedMeter {
 public:
  using Clock = std::chrono::steady_clock;

  /// `bytes` have arrived by `now`. Fewer bytes than before begin a new measurement.
  void feed(Clock::time_point now, std::uint64_t bytes);

  /// Bytes per second over at most the last five seconds; 0 until two reports differ in time.
  std::uint64_t bytesPerSecond() const;

 private:
  struct Report {
    Clock::time_point time;
    std::uint64_t bytes;
  };
  std::deque<Report> reports_;
};

}  // namespace playerx::model
