#include "kvsc/Waiter.h"

#include <poll.h>

#include <algorithm>

#include "kvsc/CancelToken.h"

namespace kvsc {
namespace {

using Clock = Waiter::Clock;
using Milliseconds = Waiter::Milliseconds;

// How long a wait may last that cannot be woken, because the token has no descriptor.
constexpr Milliseconds kBlindSlice{50};
// A poll takes its time in an int.
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

Waiter::Waiter(const CancelToken* token, Milliseconds waitLimit, Milliseconds wholeLimit)
    : token_(token), waitLimit_(waitLimit), wholeLimit_(wholeLimit) {
  restart();
}

void Waiter::restart() { wholeEnd_ = after(Clock::now(), wholeLimit_); }

bool Waiter::mayTryAgain() {
  if (outcome_ == Outcome::kTimedOut && Clock::now() < wholeEnd_) outcome_ = Outcome::kReady;
  return outcome_ == Outcome::kReady;
}

Waiter::Outcome Waiter::waitFor(int fd, short events) {
  if (outcome_ == Outcome::kReady) outcome_ = pollUntil(fd, events, endOfWait(Clock::now()));
  return outcome_;
}

Waiter::Outcome Waiter::pause(Milliseconds length) {
  if (outcome_ != Outcome::kReady) return outcome_;
  if (pollUntil(-1, 0, Clock::now() + length) == Outcome::kCancelled) {
    outcome_ = Outcome::kCancelled;
  }
  return outcome_;
}

Waiter::Outcome Waiter::mayGoOn(Clock::time_point begin) {
  if (outcome_ != Outcome::kReady) return outcome_;
  if (cancelled()) {
    outcome_ = Outcome::kCancelled;
  } else if (Clock::now() >= endOfWait(begin)) {
    outcome_ = Outcome::kTimedOut;
  }
  return outcome_;
}

Clock::time_point Waiter::endOfWait(Clock::time_point begin) const {
  return std::min(after(begin, waitLimit_), wholeEnd_);
}

bool Waiter::cancelled() const { return token_ != nullptr && token_->isCancelled(); }

Waiter::Outcome Waiter::pollUntil(int fd, short events, Clock::time_point end) {
  const int wakeFd = token_ != nullptr ? token_->fd() : -1;
  const bool blind = token_ != nullptr && wakeFd < 0;
  while (!cancelled()) {
    const Milliseconds left = timeUntil(end);
    pollfd polled[] = {{fd, events, 0}, {wakeFd, POLLIN, 0}};
    const Milliseconds length = blind ? std::min(left, kBlindSlice) : left;
    const int ready = ::poll(polled, 2, static_cast<int>(length.count()));
    if (ready > 0 && polled[0].revents != 0 && !cancelled()) return Outcome::kReady;
    if (ready == 0 && length == left && left < kLongestPoll) return Outcome::kTimedOut;
  }
  return Outcome::kCancelled;
}

}  // namespace kvsc
