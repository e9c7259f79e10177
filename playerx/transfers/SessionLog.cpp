#include "playerx/transfers/SessionLog.h"

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

void SessionLog::enter(TransferPhase phase) {
  const GuardLock lock(mutex_);
  report_.phase = phase;
}

void SessionLog::arrived(std::uint64_t bytes, std::optional<std::uint64_t> total, Time now) {
  const GuardLock lock(mutex_);
  report_.arrived = bytes;
  report_.total = total.value_or(0);
  speed_.feed(now, bytes);
}

void SessionLog::failedAttempt(TransferFailure failure, const std::string& detail,
                               unsigned attempts) {
  const GuardLock lock(mutex_);
  report_.failure = failure;
  report_.detail = detail;
  report_.failedAttempts = attempts;
}

void SessionLog::wentWell() {
  const GuardLock lock(mutex_);
  report_.failure = TransferFailure::kNone;
  report_.detail.clear();
  report_.failedAttempts = 0;
}

void SessionLog::broke(TransferFailure failure, const std::string& detail) {
  const GuardLock lock(mutex_);
  report_.phase = TransferPhase::kBroken;
  report_.failure = failure;
  report_.detail = detail;
}

void SessionLog::completed(const std::string& finalPath) {
  const GuardLock lock(mutex_);
  report_.phase = TransferPhase::kComplete;
  report_.finalPath = finalPath;
}

TransferReport SessionLog::report(Time now) const {
  const GuardLock lock(mutex_);
  TransferReport report = report_;
  const bool isArriving = report.phase == TransferPhase::kArriving;
  report.bytesPerSecond = isArriving ? speed_.bytesPerSecond(now) : 0;
  return report;
}

}  // namespace playerx::transfers
