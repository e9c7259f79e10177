#pragma once

#include <cstdint>
#include <optional>

namespace plugin {

/// Two reports of progress in a row.
struct ProgressStep {
  std::int64_t lastTime = 0;  ///< seconds, of the earlier report; 0 when there was none
  std::int64_t now = 0;       ///< seconds, of this report
  int previousPercent = 0;
  int percent = 0;
};

/// Seconds until 100 percent are there if all goes on at the pace of this one step; 0 at the
/// beginning and at the end. Nothing when the step says nothing, so that an earlier estimate stays.
std::optional<std::uint32_t> estimateTimeRemaining(const ProgressStep& step);

}  // namespace plugin
