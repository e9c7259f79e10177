#include "plugin/TimeRemaining.h"

#include <algorithm>
#include <limits>

namespace plugin {
namespace {

std::uint32_t extrapolate(const ProgressStep& step) {
  const auto seconds = static_cast<double>(step.now - step.lastTime);
  const double gained = static_cast<double>(step.percent) - step.previousPercent;
  const double missing = 100.0 - step.percent;
  constexpr double kMost = std::numeric_limits<std::uint32_t>::max();
  return static_cast<std::uint32_t>(std::clamp(seconds / gained * missing, 0.0, kMost));
}

}  // namespace

std::optional<std::uint32_t> estimateTimeRemaining(const ProgressStep& step) {
  if (step.percent == 100 || step.percent == 0) return 0;
  const bool gained = step.percent > 0 && step.percent > step.previousPercent;
  if (step.lastTime == 0 || !gained) return std::nullopt;
  const std::uint32_t seconds = extrapolate(step);
  return seconds == 0 ? std::nullopt : std::make_optional(seconds);
}

}  // namespace plugin
