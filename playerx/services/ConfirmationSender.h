#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <string>
#include <thread>

#include "playerx/platform/GuardMutex.h"
#include "playerx/settings/CurlPerform.h"

namespace playerx {

/// Sends confirmations of downloads in their order on a thread of its own, which the first of them
/// starts, so that neither a transfer nor the user waits for the online services. A confirmation
/// that fails is tried again after growing pauses. The destructor lets the one under way end and
/// tries the remaining ones in their order, up to the first that fails, for `lastChance` in all.
class ConfirmationSender {
 public:
  /// Sends one request, unless it is given up; returns whether it arrived. Called without a lock on
  /// the sender's thread, or in the destructor when that thread could not be started. May call
  /// `enqueue`.
  using Send = std::function<bool(const std::string& request, const IsGivenUp& isGivenUp)>;

  /// `firstPause` is the pause after the first failure in a row; each further one doubles it, up to
  /// a minute.
  explicit ConfirmationSender(Send send,
                              std::chrono::milliseconds firstPause = std::chrono::seconds(1),
                              std::chrono::milliseconds lastChance = std::chrono::seconds(2));
  ConfirmationSender(const ConfirmationSender&) = delete;
  ConfirmationSender& operator=(const ConfirmationSender&) = delete;
  ~ConfirmationSender();

  /// Queues a request and returns at once. Any thread.
  void enqueue(std::string request);

 private:
  struct Try {
    std::string request;
    bool isLast = false;
  };

  void ensureThread() KVPM_REQUIRES(mutex_);
  void run();
  bool waitForRequest(Try& next);
  bool isChanceOver();
  void pauseFor(std::chrono::milliseconds pause);

  const Send send_;
  const std::chrono::milliseconds firstPause_;
  const std::chrono::milliseconds lastChance_;

  GuardMutex mutex_;
  Condition wake_;
  std::deque<std::string> requests_ KVPM_GUARDED_BY(mutex_);  ///< the one being sent is the first
  bool isEnding_ KVPM_GUARDED_BY(mutex_) = false;
  Condition::Clock::time_point end_ KVPM_GUARDED_BY(mutex_);  ///< once ending, of every wait
  std::thread thread_ KVPM_GUARDED_BY(mutex_);
};

}  // namespace playerx
