#pragma once

#include <functional>
#include <map>

#include "playerx/platform/GuardMutex.h"
#include "playerx/window/queue/QueueMessages.h"

namespace playerx::window {

/// Where threads of the download manager wait for the user to choose a slot. Any thread.
class SlotDesk {
 public:
  /// `ask` is called on the waiting thread for each question, and must not wait.
  explicit SlotDesk(std::function<void(const SlotQuestion&)> ask);

  /// Asks and waits for the answer; below 0 when it is declined or the desk is closed.
  int choose(const std::string& title);

  void answer(int question, int slot);

  /// Declines all questions, present and future.
  void close();

 private:
  const std::function<void(const SlotQuestion&)> ask_;
  GuardMutex mutex_;
  Condition answered_;
  int last_ KVPM_GUARDED_BY(mutex_) = 0;
  std::map<int, int> answers_ KVPM_GUARDED_BY(mutex_);
  bool isClosed_ KVPM_GUARDED_BY(mutex_) = false;
};

}  // namespace playerx::window
