#include "playerx/app/model/Progress.h"

#include <algorithm>
#include <cmath>

namespace playerx::model {

namespace {

using std::chrono::seconds;

constexpr double kTolerance = 0.1;

/// Differences below this are those of rounding.
constexpr double kLeastSeconds = 2;

/// Longer estimates say nothing.
constexpr double kLongestSeconds = 100.0 * 24 * 3600;

bool differs(double shown, double measured, double least) {
  return std::abs(shown - measured) > std::max(least, kTolerance * measured);
}

double secondsBetween(ProgressMeter::Clock::time_point from, ProgressMeter::Clock::time_point to) {
  return std::chrono::duration<double>(to - from).count();
}

std::uint64_t arrivedOf(const ItemState& item) {
  if (item.status == DownloadStatusCompleted) return item.size;
  return item.size / 100 * static_cast<std::uint64_t>(item.percent);
}

}  // namespace

void ProgressMeter::feed(Clock::time_point now, std::uint64_t arrived, std::uint64_t total) {
  const bool wasAway = now - now_ > SpeedMeter::kLongestPause;
  now_ = now;
  if (!arrived_ || wasAway) lastByte_ = now;
  if (wasAway) shownEnd_.reset();
  speed_.feed(now, arrived);
  noteBytes(arrived);
  estimate(total);
}

Progress ProgressMeter::progress() const {
  if (!arrived_) return {};
  const auto silence = std::chrono::floor<seconds>(now_ - lastByte_);
  if (silence >= kShortestSilence) {
    return {.arrived = arrived_, .silentSeconds = static_cast<std::uint64_t>(silence.count())};
  }
  Progress progress{.arrived = arrived_, .bytesPerSecond = shownSpeed_};
  if (!shownEnd_) return progress;
  const auto left = std::chrono::round<seconds>(*shownEnd_ - now_).count();
  progress.secondsLeft = static_cast<std::uint64_t>(std::max<std::int64_t>(left, 1));
  return progress;
}

void ProgressMeter::noteBytes(std::uint64_t arrived) {
  if (arrived_ != arrived) lastByte_ = now_;
  arrived_ = arrived;
  const std::uint64_t measured = speed_.bytesPerSecond();
  if (measured == 0 || differs(double(shownSpeed_), double(measured), 0)) shownSpeed_ = measured;
}

void ProgressMeter::estimate(std::uint64_t total) {
  const auto speed = static_cast<double>(speed_.bytesPerSecond());
  const double left = speed > 0 && total > *arrived_ ? double(total - *arrived_) / speed : 0;
  if (left <= 0 || left > kLongestSeconds) {
    shownEnd_.reset();
  } else if (!shownEnd_ || differs(secondsBetween(now_, *shownEnd_), left, kLeastSeconds)) {
    shownEnd_ =
        now_ + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(left));
  }
}

void QueueProgress::add(const ItemState& item) {
  ++items;
  completed += item.status == DownloadStatusCompleted ? 1 : 0;
  unknownSizes += item.size == 0 ? 1 : 0;
  total += item.size;
  arrived += arrivedOf(item);
}

void QueueProgress::remove(const ItemState& item) {
  --items;
  completed -= item.status == DownloadStatusCompleted ? 1 : 0;
  unknownSizes -= item.size == 0 ? 1 : 0;
  total -= item.size;
  arrived -= arrivedOf(item);
}

QueueProgress progressOf(const std::vector<ItemState>& queue, bool isPaused) {
  QueueProgress progress;
  for (const ItemState& item : queue) progress.add(item);
  progress.isPaused = isPaused;
  return progress;
}

}  // namespace playerx::model
