#pragma once

#include <cstdint>
#include <optional>

namespace playerx::transfers {

/// Whole percent of `total` that `bytes` are, 0..100; 100 only when nothing is missing.
int percentOf(std::uint64_t bytes, std::uint64_t total);

/// Decides which percentages of one transfer are worth a report: each that differs from the one
/// before. Not synchronised.
class PercentReporter {
 public:
  /// `shown` is what the receiver knows already; nullopt when that is not known.
  explicit PercentReporter(std::optional<int> shown) : shown_(shown) {}

  /// The percentage to report now, if any; `total` is nullopt when not known.
  std::optional<int> next(std::uint64_t bytes, std::optional<std::uint64_t> total);

 private:
  std::optional<int> shown_;
};

}  // namespace playerx::transfers
