#include "playerx/transfers/SessionLog.h"

namespace playerx::transfers {

void SessionLog::enter(TransferPhase phase) {
  const GuardLock lock(mutex_);
  report_.phase = phase;
}

void SessionLog::arrivesIn(const std::string& partialPath) {
  const GuardLock lock(mutex_);
  report_.partialPath = partialPath;
}

void SessionLog::arrived(std::uint64_t bytes, std::optional<std::uint64_t> total) {
  const GuardLock lock(mutex_);
  report_.arrived = bytes;
  report_.total = total.value_or(0);
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

TransferReport SessionLog::report() const {
  const GuardLock lock(mutex_);
  return report_;
}

}  // namespace playerx::transfers
