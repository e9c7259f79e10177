#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "playerx/platform/GuardMutex.h"
#include "playerx/transfers/TransferReports.h"

namespace playerx::transfers {

/// What is known of one session, for questions about it. All operations may be called from any
/// thread.
class SessionLog {
 public:
  void enter(TransferPhase phase);

  /// The file that the bytes are written to.
  void arrivesIn(const std::string& partialPath);
  void arrived(std::uint64_t bytes, std::optional<std::uint64_t> total);

  /// A failure that is being retried; `attempts` failed in a row.
  void failedAttempt(TransferFailure failure, const std::string& detail, unsigned attempts);
  void wentWell();

  void broke(TransferFailure failure, const std::string& detail);
  void completed(const std::string& finalPath);

  /// All of it but the identity of the session, which the log does not know.
  TransferReport report() const;

 private:
  mutable GuardMutex mutex_;
  TransferReport report_ KVPM_GUARDED_BY(mutex_);
};

}  // namespace playerx::transfers
