#include "plugin/ProgressRules.h"

#include <algorithm>
#include <limits>

namespace plugin {
namespace {

std::uint64_t shareOf(std::uint64_t size, int percent) {
  constexpr float kBeyond = 18446744073709551616.0F;  // 2^64, the first value that does not fit
  const float share = static_cast<float>(size) * (static_cast<float>(percent) / 100.0F);
  return share < kBeyond ? static_cast<std::uint64_t>(share)
                         : std::numeric_limits<std::uint64_t>::max();
}

std::uint32_t extrapolate(const ProgressStep& step) {
  const auto seconds = static_cast<double>(step.now - step.lastTime);
  const double gained = static_cast<double>(step.percent) - step.previousPercent;
  const double missing = 100.0 - step.percent;
  constexpr double kMost = std::numeric_limits<std::uint32_t>::max();
  return static_cast<std::uint32_t>(std::clamp(seconds / gained * missing, 0.0, kMost));
}

}  // namespace

std::optional<std::uint64_t> bytesToConfirm(const ProgressOfTicket& progress) {
  if (progress.ticketId <= 0 || progress.size == 0) return std::nullopt;
  if (progress.percent >= 1 && progress.previousPercent <= 0) {
    return shareOf(progress.size, progress.percent);
  }
  if (progress.percent == 100 && progress.previousPercent != 100) return progress.size;
  return std::nullopt;
}

std::optional<std::uint32_t> estimateTimeRemaining(const ProgressStep& step) {
  if (step.percent == 100 || step.percent == 0) return 0;
  const bool gained = step.percent > 0 && step.percent > step.previousPercent;
  if (step.lastTime == 0 || !gained) return std::nullopt;
  const std::uint32_t seconds = extrapolate(step);
  return seconds == 0 ? std::nullopt : std::make_optional(seconds);
}

}  // namespace plugin
