#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace playerx::window {

/// The time that a download still needs, steady enough to be read: it counts down by itself and
/// takes a new value only when the estimate has moved clearly away from it.
class TimeLeft {
 public:
  using Clock = std::chrono::steady_clock;

  /// Seconds left for `bytes` at `bytesPerSecond`; nullopt while that cannot be known.
  std::optional<std::uint64_t> of(std::uint64_t bytes, std::uint64_t bytesPerSecond,
                                  Clock::time_point now);

 private:
  std::optional<Clock::time_point> end_;
};

}  // namespace playerx::window
