#include "playerx/transfers/RetryPlan.h"

#include <curl/curl.h>

#include <algorithm>

#include "playerx/transfers/ContentRange.h"

namespace playerx::transfers {
namespace {

constexpr std::uint64_t kLongestSeconds = 1'000'000;  // keeps the arithmetic far from overflow

}  // namespace

bool isWorthRetrying(TransferFailure failure, bool contacted) {
  switch (failure) {
    case TransferFailure::kDropped:
    case TransferFailure::kStalled:
      return true;
    case TransferFailure::kNoSuchHost:
    case TransferFailure::kNoSuchProxy:
    case TransferFailure::kRefused:
    case TransferFailure::kTimeout:
    case TransferFailure::kNetwork:
    case TransferFailure::kTls:
      return contacted;
    default:
      return false;
  }
}

Milliseconds pauseBeforeRetry(const RetryRules& rules, unsigned number, double jitter,
                              std::optional<Milliseconds> retryAfter) {
  Milliseconds pause = rules.firstPause;
  for (unsigned i = 1; i < number && pause < rules.longestPause; ++i) pause *= 2;
  pause = std::min(pause, rules.longestPause);
  const double spread = 0.75 + 0.5 * jitter;
  pause = Milliseconds(static_cast<Milliseconds::rep>(static_cast<double>(pause.count()) * spread));
  return retryAfter ? std::max(pause, std::min(*retryAfter, rules.longestRetryAfter)) : pause;
}

std::optional<Milliseconds> parseRetryAfter(const std::string& value, std::time_t now) {
  if (const auto seconds = parseNumber(value)) {
    return std::chrono::seconds(std::min(*seconds, kLongestSeconds));
  }
  const std::time_t date = curl_getdate(value.c_str(), nullptr);
  if (date < 0) return std::nullopt;
  const auto wait = date > now ? static_cast<std::uint64_t>(date - now) : 0;
  return std::chrono::seconds(std::min(wait, kLongestSeconds));
}

void RetryCounter::arrived(std::uint64_t bytes) {
  if (bytes <= mostArrived_) return;
  mostArrived_ = bytes;
  failures_ = 0;
}

std::optional<unsigned> RetryCounter::failed(const RetryRules& rules) {
  if (failures_ >= rules.retries) return std::nullopt;
  return ++failures_;
}

}  // namespace playerx::transfers
