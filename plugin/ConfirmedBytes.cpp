#include "plugin/ConfirmedBytes.h"

#include <limits>

namespace plugin {
namespace {

std::uint64_t shareOf(std::uint64_t size, int percent) {
  constexpr float kBeyond = 18446744073709551616.0F;  // 2^64, the first value that does not fit
  const float share = static_cast<float>(size) * (static_cast<float>(percent) / 100.0F);
  return share < kBeyond ? static_cast<std::uint64_t>(share)
                         : std::numeric_limits<std::uint64_t>::max();
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

}  // namespace plugin
