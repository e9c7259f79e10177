#include "kvpm/TimeTools.h"

#include <chrono>
#include <thread>

namespace kvpm {

using Clock = std::chrono::steady_clock;

std::int64_t TimeTools::getTime() { return Clock::now().time_since_epoch().count() + 1; }

std::int64_t TimeTools::getTimeScale() { return Clock::period::den / Clock::period::num; }

void TimeTools::sleep(std::uint32_t milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace kvpm
