#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

#include "playerx/transfers/TransferFailure.h"

namespace playerx::transfers {

using Milliseconds = std::chrono::milliseconds;

/// How often and after which pauses a failed request is repeated.
struct RetryRules {
  unsigned retries = 5;                     ///< in a row, without progress
  Milliseconds firstPause{1000};            ///< doubled from retry to retry
  Milliseconds longestPause{30'000};        ///< of our own; the jitter comes on top
  Milliseconds longestRetryAfter{120'000};  ///< that a server can ask for
};

/// True when a request that failed so is worth repeating. Until the server has answered in this
/// session (`contacted`) only a connection that broke or went silent is: a wrong name or a closed
/// port will not change, and the user is told at once.
bool isWorthRetrying(TransferFailure failure, bool contacted);

/// The pause before the retry `number` (from 1 on). `jitter` in [0, 1) spreads it by a quarter to
/// both sides, so that clients that lost their server together do not come back together.
Milliseconds pauseBeforeRetry(const RetryRules& rules, unsigned number, double jitter,
                              std::optional<Milliseconds> retryAfter);

/// The value of a Retry-After field, seconds or a date, as a time to wait from `now` on; nullopt
/// when it is neither.
std::optional<Milliseconds> parseRetryAfter(const std::string& value, std::time_t now);

/// Counts failures in a row; more bytes than ever before begin a new count.
class RetryCounter {
 public:
  explicit RetryCounter(std::uint64_t arrived) : mostArrived_(arrived) {}

  void arrived(std::uint64_t bytes);

  /// Counts one failure; returns the number of the retry that follows, nullopt when there were
  /// enough.
  std::optional<unsigned> failed(const RetryRules& rules);

  /// Takes the latest failure back: what had failed may have been the network's fault.
  void forgive() { failures_ -= failures_ > 0 ? 1 : 0; }

 private:
  std::uint64_t mostArrived_;
  unsigned failures_ = 0;
};

}  // namespace playerx::transfers
