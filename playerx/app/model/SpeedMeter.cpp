#include "playerx/app/model/SpeedMeter.h"

namespace playerx::model {

namespace {

constexpr std::chrono::seconds kWindow(10);

/// Of reports closer together than this only the last is kept.
constexpr std::chrono::milliseconds kSpacing(100);

/// What comes in less says nothing: the first bytes have often waited somewhere.
constexpr std::chrono::milliseconds kLeastTime(250);

}  // namespace

void SpeedMeter::feed(Clock::time_point now, std::uint64_t bytes) {
  const bool isNew = !reports_.empty() &&
                     (bytes < reports_.back().bytes || now - reports_.back().time > kLongestPause);
  if (isNew) reports_.clear();
  const std::size_t count = reports_.size();
  const bool isDense = count >= 2 && reports_[count - 1].time - reports_[count - 2].time < kSpacing;
  if (isDense) reports_.pop_back();
  reports_.push_back({now, bytes});
  while (reports_.size() > 2 && now - reports_.front().time > kWindow) reports_.pop_front();
}

std::uint64_t SpeedMeter::bytesPerSecond() const {
  if (reports_.size() < 2) return 0;
  const std::chrono::duration<double> time = reports_.back().time - reports_.front().time;
  if (time < kLeastTime) return 0;
  const auto bytes = static_cast<double>(reports_.back().bytes - reports_.front().bytes);
  return static_cast<std::uint64_t>(bytes / time.count());
}

}  // namespace playerx::model
