#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace playerx {

/// Sends confirmations of downloads in their order on a thread of its own, so that no transfer and
/// no user waits for the online services. A confirmation that fails is tried again with growing
/// pauses. Destruction tries each one that is left once more.
class ConfirmationSender {
 public:
  /// Sends one request; returns whether it arrived. Called on the sender's thread.
  using Send = std::function<bool(const std::string& request)>;

  /// `firstPause` is the pause after the first failure in a row; each further one doubles it, up to
  /// a minute.
  explicit ConfirmationSender(Send send,
                              std::chrono::milliseconds firstPause = std::chrono::seconds(1));
  ConfirmationSender(const ConfirmationSender&) = delete;
  ConfirmationSender& operator=(const ConfirmationSender&) = delete;
  ~ConfirmationSender();

  /// Queues a request and returns at once. Any thread.
  void enqueue(std::string request);

 private:
  void run();

  const Send send_;
  const std::chrono::milliseconds firstPause_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::string> requests_;  // guarded by mutex_
  bool ending_ = false;               // guarded by mutex_
  std::thread thread_;                // last: runs over the rest
};

}  // namespace playerx
