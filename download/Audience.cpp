#include "download/Audience.h"

#include <algorithm>
#include <iterator>

namespace download {

void Audience::set(Manager* manager, View* view) {
  const kvpm::MutexLock lock(mutex_);
  manager_ = manager;
  view_ = view;
  while (isEarlierViewVisited()) left_.wait(mutex_);
}

bool Audience::isEarlierViewVisited() const {
  const auto self = std::this_thread::get_id();
  return std::any_of(visitors_.begin(), visitors_.end(),
                     [self, present = view_](const Visitor& visitor) {
                       return visitor.view != present && visitor.thread != self;
                     });
}

Audience::Manager* Audience::presentManager() const {
  const kvpm::MutexLock lock(mutex_);
  return manager_;
}

Audience::View* Audience::presentView() const {
  const kvpm::MutexLock lock(mutex_);
  return view_;
}

Audience::View* Audience::enter() {
  const kvpm::MutexLock lock(mutex_);
  visitors_.push_back({std::this_thread::get_id(), view_});
  return view_;
}

void Audience::leave() {
  const kvpm::MutexLock lock(mutex_);
  const auto self = std::this_thread::get_id();
  const auto last = std::find_if(visitors_.rbegin(), visitors_.rend(),
                                 [self](const Visitor& visitor) { return visitor.thread == self; });
  visitors_.erase(std::next(last).base());
  left_.notify_all();
}

}  // namespace download
