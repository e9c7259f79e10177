#include "kvsc/Waiter.h"

#include <poll.h>

#include <algorithm>

#include "kvsc/CancelToken.h"

namespace kvsc {
namespace {

using Clock = Waiter::Clock;
using Milliseconds = Waiter::Milliseconds;

// How long a poll may last that a cancel cannot wake, because the token has no descriptor.
constexpr Milliseconds kBlindSlice{50};
// `poll` takes its time in an int.
constexpr Milliseconds kLongestPoll{1 << 30};

Clock::time_point after(Clock::time_point begin, Milliseconds limit) {
  return limit.count() > 0 ? begin + limit : Clock::time_point::max();
}

Milliseconds timeUntil(Clock::time_point end) {
  if (end == Clock::time_point::max()) return kLongestPoll;
  return std::clamp(std::chrono::ceil<Milliseconds>(end - Clock::now()), Milliseconds(0),
                    kLongestPoll);
}

}  // namespace

Waiter::Waiter(const CancelToken* token, Milliseconds waitLimit, Milliseconds totalLimit)
    : token_(token), waitLimit_(waitLimit), totalLimit_(totalLimit) {
  restart();
}

void Waiter::restart() { totalEnd_ = after(Clock::now(), totalLimit_); }

bool Waiter::mayTryAgain() {
  if (outcome_ == Outcome::kTimedOut && Clock::now() < totalEnd_) end(Outcome::kReady, 0);
  return outcome_ == Outcome::kReady;
}

Waiter::Outcome Waiter::waitFor(int fd, short events) {
  if (outcome_ != Outcome::kReady) return outcome_;
  return pollUntil(fd, events, endOfWait(Clock::now()));
}

Waiter::Outcome Waiter::pause(Milliseconds length) {
  if (outcome_ != Outcome::kReady) return outcome_;
  // The end of a pause is no time-out.
  if (pollUntil(-1, 0, Clock::now() + length) == Outcome::kTimedOut) end(Outcome::kReady, 0);
  return outcome_;
}

Waiter::Outcome Waiter::mayGoOn(Clock::time_point begin) {
  if (outcome_ != Outcome::kReady) return outcome_;
  if (cancelled()) return end(Outcome::kCancelled, ECANCELED);
  if (Clock::now() >= endOfWait(begin)) return end(Outcome::kTimedOut, ETIMEDOUT);
  return outcome_;
}

Waiter::Outcome Waiter::end(Outcome outcome, int error) {
  outcome_ = outcome;
  error_ = error;
  return outcome;
}

Clock::time_point Waiter::endOfWait(Clock::time_point begin) const {
  return std::min(after(begin, waitLimit_), totalEnd_);
}

bool Waiter::cancelled() const { return token_ != nullptr && token_->isCancelled(); }

Waiter::Outcome Waiter::pollUntil(int fd, short events, Clock::time_point deadline) {
  const int wakeFd = token_ != nullptr ? token_->fd() : -1;
  const bool blind = token_ != nullptr && wakeFd < 0;
  while (!cancelled()) {
    const Milliseconds left = timeUntil(deadline);
    pollfd polled[] = {{fd, events, 0}, {wakeFd, POLLIN, 0}};
    const Milliseconds length = blind ? std::min(left, kBlindSlice) : left;
    const int ready = ::poll(polled, 2, static_cast<int>(length.count()));
    if (ready < 0 && errno != EINTR) return end(Outcome::kFailed, errno);
    if (ready > 0 && polled[0].revents != 0 && !cancelled()) return Outcome::kReady;
    if (ready == 0 && length == left && left < kLongestPoll) {
      return end(Outcome::kTimedOut, ETIMEDOUT);
    }
  }
  return end(Outcome::kCancelled, ECANCELED);
}

}  // namespace kvsc
