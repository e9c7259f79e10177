#pragma once

#include <cstdint>
#include <optional>

namespace plugin {

/// What the confirmation of a download depends on.
struct ProgressOfTicket {
  long ticketId = 0;       ///< 0 or less: not confirmed at all
  std::uint64_t size = 0;  ///< bytes of the whole film; 0 when not known
  int previousPercent = 0;
  int percent = 0;
};

/// The bytes of which the online services are told at this report of progress: at the first one of
/// 1 percent or more and at the first one of 100 percent; nothing at any other. The first share is
/// computed in single precision, as the services expect it.
std::optional<std::uint64_t> bytesToConfirm(const ProgressOfTicket& progress);

}  // namespace plugin
