#include "plugin/AttachedView.h"

#include <algorithm>
#include <utility>

namespace plugin {

void AttachedView::attach(View* view) {
  std::unique_lock lock(mutex_);
  View* const former = std::exchange(view_, view);
  if (former == view) return;
  left_.wait(lock, [&] { return !isVisitedElsewhere(former); });
}

void AttachedView::visit(const std::function<void(View&)>& visit) {
  struct Leaving {
    AttachedView& attached;
    View* view;
    ~Leaving() { attached.leave(view); }
  };
  View* const view = enter();
  if (view == nullptr) return;
  const Leaving leaving{*this, view};  // also when the visit throws: detaching waits for its end
  visit(*view);
}

AttachedView::View* AttachedView::enter() {
  const std::lock_guard lock(mutex_);
  if (view_ != nullptr) visits_.push_back({view_, std::this_thread::get_id()});
  return view_;
}

void AttachedView::leave(View* view) {
  {
    const std::lock_guard lock(mutex_);
    visits_.erase(
        std::find(visits_.begin(), visits_.end(), Visit{view, std::this_thread::get_id()}));
  }
  left_.notify_all();
}

bool AttachedView::isVisitedElsewhere(View* view) const {
  return std::any_of(visits_.begin(), visits_.end(), [view](const Visit& visit) {
    return visit.view == view && visit.thread != std::this_thread::get_id();
  });
}

}  // namespace plugin
