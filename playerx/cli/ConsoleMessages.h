#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "playerx/framework/UserMessages.h"

namespace playerx {

class WakeUp;

/// Keeps what other plug-ins tell the user until the main thread prints it between its own lines.
class ConsoleMessages : public UserMessages {
 public:
  /// `wakeUp` is not owned and outlives this.
  explicit ConsoleMessages(WakeUp& wakeUp) : wakeUp_(wakeUp) {}

  void tellUser(const std::string& sentence) override;

  /// The sentences since the last call. Any thread.
  std::vector<std::string> take();

 private:
  WakeUp& wakeUp_;
  std::mutex mutex_;
  std::vector<std::string> sentences_;  // guarded by mutex_
};

}  // namespace playerx
