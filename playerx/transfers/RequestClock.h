#pragma once

#include <chrono>
#include <utility>

namespace playerx::transfers {

/// How long one request has been silent, and when what it brought has to be saved. Not
/// synchronised.
class RequestClock {
 public:
  using Clock = std::chrono::steady_clock;

  RequestClock() = default;
  RequestClock(Clock::time_point start, Clock::duration saveAfter)
      : lastTouch_(start), saveAt_(start + saveAfter) {}

  /// Something came. Dated by the next `settle`, so that a chunk costs no look at the clock.
  void touch() { isTouched_ = true; }

  /// Begins the silence anew when something came, or when what may come is kept back here.
  void settle(Clock::time_point now, bool isKeptBack) {
    if (std::exchange(isTouched_, false) || isKeptBack) lastTouch_ = now;
  }

  /// When the silence will have lasted for `longest`.
  Clock::time_point silentUntil(Clock::duration longest) const { return lastTouch_ + longest; }

  /// When a save is due: a film that takes less time may be complete before.
  Clock::time_point saveAt() const { return saveAt_; }

 private:
  bool isTouched_ = false;
  Clock::time_point lastTouch_;
  Clock::time_point saveAt_;
};

}  // namespace playerx::transfers
