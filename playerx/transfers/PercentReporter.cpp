#include "playerx/transfers/PercentReporter.h"

namespace playerx::transfers {

int percentOf(std::uint64_t bytes, std::uint64_t total) {
  if (bytes >= total) return 100;
  constexpr std::uint64_t kLargestFactor = UINT64_MAX / 100;
  // A total beyond the factor is so large that dividing it first loses nothing.
  const std::uint64_t percent =
      bytes <= kLargestFactor ? bytes * 100 / total : bytes / (total / 100 + 1);
  return static_cast<int>(percent);
}

std::optional<int> PercentReporter::next(std::uint64_t bytes, std::optional<std::uint64_t> total) {
  if (!total) return std::nullopt;
  const int percent = percentOf(bytes, *total);
  if (shown_ == percent) return std::nullopt;
  shown_ = percent;
  return percent;
}

}  // namespace playerx::transfers
