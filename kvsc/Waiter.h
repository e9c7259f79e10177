#pragma once

#include <chrono>

namespace kvsc {

class CancelToken;

/// The waits of one connection: each has a limit, all together have one, and a cancel ends them.
///
/// A value used by the thread that runs the exchange. The first wait that ends badly decides: every
/// later one ends at once with the same outcome.
class Waiter {
 public:
  using Clock = std::chrono::steady_clock;
  using Milliseconds = std::chrono::milliseconds;

  enum class Outcome {
    kReady,      ///< what was waited for has come
    kTimedOut,   ///< one of the limits is over
    kCancelled,  ///< the token was cancelled
  };

  /// `token` is not owned and may be null. A limit of zero or less is none.
  Waiter(const CancelToken* token, Milliseconds waitLimit, Milliseconds wholeLimit);

  /// Lets the limit of the whole begin anew.
  void restart();

  /// Lets every wait from now on end at once: for goodbyes that nobody waits for.
  void stopWaiting() { outcome_ = Outcome::kTimedOut; }

  /// Forgets a wait that took too long, as long as the whole may go on; returns whether it may: for
  /// another way to the same goal.
  bool mayTryAgain();

  /// Waits until `fd` shows one of the poll `events`, or an error that the next call on it reports.
  Outcome waitFor(int fd, short events);

  /// Waits for `length`, or until cancelled. The limits play no part.
  Outcome pause(Milliseconds length);

  /// Whether the wait that began at `begin` may go on (`kReady`): for waits on something without a
  /// descriptor, asked every few milliseconds.
  Outcome mayGoOn(Clock::time_point begin);

  /// `kReady` until a wait has ended badly.
  Outcome outcome() const { return outcome_; }

 private:
  Clock::time_point endOfWait(Clock::time_point begin) const;
  bool cancelled() const;
  Outcome pollUntil(int fd, short events, Clock::time_point end);

  const CancelToken* token_;
  Milliseconds waitLimit_;
  Milliseconds wholeLimit_;
  Clock::time_point wholeEnd_;
  Outcome outcome_ = Outcome::kReady;
};

}  // namespace kvsc
