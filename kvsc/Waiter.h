#pragma once

#include <cerrno>
#include <chrono>

namespace kvsc {

class CancelToken;

/// The waits of one connection. Each has a limit, all together have a total limit, and a cancel
/// ends them.
///
/// A value used by the thread that runs the exchange. After the first wait that fails, every later
/// one ends at once with the same outcome.
class Waiter {
 public:
  using Clock = std::chrono::steady_clock;
  using Milliseconds = std::chrono::milliseconds;

  enum class Outcome {
    kReady,      ///< the awaited event has come
    kTimedOut,   ///< one of the limits has passed
    kCancelled,  ///< the token was cancelled
    kFailed,     ///< the system refused to wait
  };

  /// `token` is not owned and may be null. A limit of zero or less means no limit.
  Waiter(const CancelToken* token, Milliseconds waitLimit, Milliseconds totalLimit);

  /// Starts the total limit again.
  void restart();

  /// Makes every later wait end at once: for a closing message that is sent only if that is
  /// possible without waiting.
  void stopWaiting() { end(Outcome::kTimedOut, ETIMEDOUT); }

  /// Forgets a wait that timed out, unless the total limit has passed, so that another address can
  /// be tried. Returns whether waits may go on.
  bool mayTryAgain();

  /// Waits until `fd` shows one of the poll `events`, or an error that the next call on it reports.
  Outcome waitFor(int fd, short events);

  /// Waits for `length`, or until cancelled. The limits do not apply.
  Outcome pause(Milliseconds length);

  /// Whether the wait that began at `begin` may go on (`kReady`): for waits on something without a
  /// descriptor, asked every few milliseconds.
  Outcome mayGoOn(Clock::time_point begin);

  /// `kReady` until a wait has failed.
  Outcome outcome() const { return outcome_; }

  /// The errno value of the wait that failed, such as `ETIMEDOUT`; 0 before.
  int error() const { return error_; }

 private:
  Clock::time_point endOfWait(Clock::time_point begin) const;
  bool cancelled() const;
  Outcome end(Outcome outcome, int error);
  Outcome pollUntil(int fd, short events, Clock::time_point deadline);

  const CancelToken* token_;
  Milliseconds waitLimit_;
  Milliseconds totalLimit_;
  Clock::time_point totalEnd_;
  Outcome outcome_ = Outcome::kReady;
  int error_ = 0;
};

}  // namespace kvsc
