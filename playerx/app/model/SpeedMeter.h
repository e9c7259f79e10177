#pragma once

#include <chrono>
#include <cstdint>
#include <deque>

namespace playerx::model {

/// Average speed over the last seconds of one download. Time comes from the caller.
class SpeedMeter {
 public:
  using Clock = std::chrono::steady_clock;

  /// Reports come far more often than this while the process runs.
  static constexpr std::chrono::seconds kLongestPause{5};

  /// `bytes` have arrived by `now`. Fewer bytes than before, and a pause between two reports
  /// (the process was stopped), begin a new measurement.
  void feed(Clock::time_point now, std::uint64_t bytes);

  /// Bytes per second over at most the last ten seconds; 0 until a quarter of a second
  /// has been seen.
  std::uint64_t bytesPerSecond() const;

 private:
  struct Report {
    Clock::time_point time;
    std::uint64_t bytes;
  };
  std::deque<Report> reports_;
};

}  // namespace playerx::model
