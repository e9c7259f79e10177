#pragma once

#include <cstdint>
#include <optional>

namespace plugin {

// What follows from a report of progress. Pure functions of two reports in a row.

/// What the confirmation of a download depends on.
struct ProgressOfTicket {
  long ticketId = 0;       ///< 0 or less: not confirmed at all
  std::uint64_t size = 0;  ///< bytes of the whole film; 0 when not known
  int previousPercent = 0;
  int percent = 0;
};

/// The bytes of which the online services are told at this report of progress: at the first one of
/// 1 percent or more and at the first one of 100 percent; nullopt at any other. The first share is
/// computed in single precision, as the services expect it.
std::optional<std::uint64_t> bytesToConfirm(const ProgressOfTicket& progress);

/// Two reports of progress in a row.
struct ProgressStep {
  std::int64_t lastTime = 0;  ///< seconds, of the earlier report; 0 when there was none
  std::int64_t now = 0;       ///< seconds, of this report
  int previousPercent = 0;
  int percent = 0;
};

/// Seconds until 100 percent are there if all goes on at the pace of this one step; 0 at the
/// beginning and at the end. Nullopt when the step gives no estimate: an earlier one then stays.
std::optional<std::uint32_t> estimateTimeRemaining(const ProgressStep& step);

}  // namespace plugin
