#include "kvpm/TimeTools.h"

#include <chrono>
#include <thread>

namespace kvpm {
namespace {

using Ticks = std::chrono::nanoseconds;

// Ahead of the system's own count, so that even the whole seconds are above 0 right after boot.
constexpr Ticks kHeadStart = std::chrono::seconds(1);

}  // namespace

std::int64_t TimeTools::getTime() {
  const auto sinceBoot = std::chrono::steady_clock::now().time_since_epoch();
  return (std::chrono::duration_cast<Ticks>(sinceBoot) + kHeadStart).count();
}

std::int64_t TimeTools::getTimeScale() { return Ticks(std::chrono::seconds(1)).count(); }

void TimeTools::sleep(std::uint32_t milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace kvpm
