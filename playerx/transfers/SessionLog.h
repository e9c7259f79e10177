#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "playerx/platform/GuardMutex.h"
#include "playerx/transfers/TransferReports.h"

namespace playerx::transfers {

/// Average speed of the last few seconds, up to the moment of the question: it falls to 0 when
/// nothing comes any more. Fed at every turn of the engine, it keeps one measurement per 100 ms.
/// Time comes from the caller and never goes back. Not synchronised.
class SpeedWindow {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// `bytes` are there at `now`. Fewer than before begin a new measurement.
  void feed(Time now, std::uint64_t bytes);

  /// Bytes per second up to `now`; 0 before two measurements and when nothing came lately.
  std::uint64_t bytesPerSecond(Time now) const;

 private:
  struct Sample {
    Time time;
    std::uint64_t bytes;
  };
  std::deque<Sample> samples_;
};

/// What is known of one session, for questions about it. All operations may be called from any
/// thread.
class SessionLog {
 public:
  using Time = SpeedWindow::Time;

  void enter(TransferPhase phase);
  void arrived(std::uint64_t bytes, std::optional<std::uint64_t> total, Time now);

  /// A failure that is being retried; `attempts` failed in a row.
  void failedAttempt(TransferFailure failure, const std::string& detail, unsigned attempts);
  void wentWell();

  void broke(TransferFailure failure, const std::string& detail);
  void completed(const std::string& finalPath);

  /// All of it but the identity of the session, which the log does not know.
  TransferReport report(Time now) const;

 private:
  mutable GuardMutex mutex_;
  TransferReport report_ KVPM_GUARDED_BY(mutex_);
  SpeedWindow speed_ KVPM_GUARDED_BY(mutex_);
};

}  // namespace playerx::transfers
