#include "playerx/window/queue/TimeLeft.h"

#include <algorithm>
#include <cmath>

namespace playerx::window {

namespace {

/// What is shown stays while it is within this part of the estimate, or within these seconds.
constexpr double kTolerance = 0.15;
constexpr double kToleranceSeconds = 2;

/// Longer times say nothing.
constexpr double kLongest = 30.0 * 86400;

}  // namespace

std::optional<std::uint64_t> TimeLeft::of(std::uint64_t bytes, std::uint64_t bytesPerSecond,
                                          Clock::time_point now) {
  if (bytesPerSecond == 0) {
    end_.reset();
    return std::nullopt;
  }
  const double estimate = static_cast<double>(bytes) / static_cast<double>(bytesPerSecond);
  if (estimate > kLongest) return std::nullopt;
  const double tolerance = std::max(kToleranceSeconds, estimate * kTolerance);
  const double shown = end_ ? std::chrono::duration<double>(*end_ - now).count() : -1;
  if (!end_ || std::abs(shown - estimate) > tolerance) {
    end_ =
        now + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(estimate));
  }
  const double left = std::chrono::duration<double>(*end_ - now).count();
  return static_cast<std::uint64_t>(std::max(1.0, std::ceil(left)));
}

}  // namespace playerx::window
