#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace playerx::transfers {

/// How many bytes may come now: a limit of their rate, met on average. What has come within it
/// makes no later wait longer, and what could have come in an idle time is not made up for. Time
/// comes from the caller. Used by one thread.
class RateLimit {
 public:
  using Clock = std::chrono::steady_clock;

  /// Bytes per second from now on; 0: no limit. What has been taken too much is forgiven.
  void set(std::uint64_t bytesPerSecond, Clock::time_point now);

  /// Whether the next bytes, however many, may be taken.
  bool isOpen(Clock::time_point now) const { return rate_ == 0 || now >= paidAt_; }

  void take(std::size_t bytes, Clock::time_point now);

  /// When `isOpen` is true again; nullopt when there is no limit.
  std::optional<Clock::time_point> opensAt() const;

 private:
  std::uint64_t rate_ = 0;
  Clock::time_point paidAt_{};  ///< what has been taken fits in the time up to this one
};

}  // namespace playerx::transfers
