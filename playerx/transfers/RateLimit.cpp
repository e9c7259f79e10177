#include "playerx/transfers/RateLimit.h"

#include <algorithm>

namespace playerx::transfers {

void RateLimit::set(std::uint64_t bytesPerSecond, Clock::time_point now) {
  rate_ = bytesPerSecond;
  paidAt_ = now;
}

void RateLimit::take(std::size_t bytes, Clock::time_point now) {
  if (rate_ == 0) return;
  const std::chrono::duration<double> cost(static_cast<double>(bytes) / static_cast<double>(rate_));
  paidAt_ = std::max(paidAt_, now) + std::chrono::duration_cast<Clock::duration>(cost);
}

std::optional<RateLimit::Clock::time_point> RateLimit::opensAt() const {
  return rate_ == 0 ? std::nullopt : std::optional(paidAt_);
}

}  // namespace playerx::transfers
