#include "playerx/transfers/SpeedWindow.h"

namespace playerx::transfers {
namespace {

using std::chrono::duration;
using std::chrono::milliseconds;

constexpr milliseconds kWindow{3000};
constexpr milliseconds kResolution{100};

}  // namespace

void SpeedWindow::feed(Time now, std::uint64_t bytes) {
  if (!samples_.empty() && bytes < samples_.back().bytes) samples_.clear();
  // The last sample moves along until it is far enough from the one before it.
  const bool isClose =
      samples_.size() > 1 && now - samples_[samples_.size() - 2].time < kResolution;
  if (isClose) samples_.pop_back();
  samples_.push_back({now, bytes});
  while (samples_.size() > 2 && now - samples_[1].time >= kWindow) samples_.pop_front();
}

std::uint64_t SpeedWindow::bytesPerSecond(Time now) const {
  if (samples_.size() < 2 || now - samples_.back().time >= kWindow) return 0;
  const double seconds = duration<double>(now - samples_.front().time).count();
  const auto bytes = static_cast<double>(samples_.back().bytes - samples_.front().bytes);
  return seconds > 0 ? static_cast<std::uint64_t>(bytes / seconds) : 0;
}

}  // namespace playerx::transfers
