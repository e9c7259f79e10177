#include "plugin/EventCount.h"

namespace plugin {

EventCount::Key EventCount::key() const {
  const kvpm::MutexLock lock(mutex_);
  return count_;
}

void EventCount::raise() {
  {
    const kvpm::MutexLock lock(mutex_);
    ++count_;
  }
  raised_.notify_all();
}

void EventCount::wait(Key key, std::chrono::milliseconds longest) const {
  const auto deadline = std::chrono::steady_clock::now() + longest;
  const kvpm::MutexLock lock(mutex_);
  while (count_ == key) {
    if (raised_.wait_until(mutex_, deadline) == std::cv_status::timeout) return;
  }
}

}  // namespace plugin
