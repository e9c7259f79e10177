#include "plugin/EventCount.h"

namespace plugin {

EventCount::Ticket EventCount::ticket() const {
  const std::lock_guard lock(mutex_);
  return count_;
}

void EventCount::raise() {
  {
    const std::lock_guard lock(mutex_);
    ++count_;
  }
  raised_.notify_all();
}

void EventCount::wait(Ticket ticket, std::chrono::milliseconds longest) const {
  std::unique_lock lock(mutex_);
  raised_.wait_for(lock, longest, [&] { return count_ != ticket; });
}

}  // namespace plugin
