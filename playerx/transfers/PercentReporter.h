#pragma once

#include <cstdint>
#include <optional>

namespace playerx::transfers {

/// Whole percent of `total` that `bytes` are, 0..100; 100 only when nothing is missing.
int percentOf(std::uint64_t bytes, std::uint64_t total);

/// Says which percentages are worth a report: each that differs from the one before. It
/// belongs to one transfer and reports nothing itself. Not synchronised.
class PercentReporter {
 public:
  /// `shown` is what the receiver takes for granted; none when it may believe anything.
  explicit PercentReporter(std::optional<int> shown) : shown_(shown) {}

  /// The percentage to report now, if any. A `total` that is not known is none.
  std::optional<int> next(std::uint64_t bytes, std::optional<std::uint64_t> total);

 private:
  std::optional<int> shown_;
};

}  // namespace playerx::transfers
