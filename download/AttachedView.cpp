#include "download/AttachedView.h"

#include <algorithm>

namespace download {
namespace {

thread_local int callsUnderWay = 0;

}  // namespace

AttachedView::InsideCall::InsideCall() { ++callsUnderWay; }

AttachedView::InsideCall::~InsideCall() { --callsUnderWay; }

bool AttachedView::isInNotice() { return callsUnderWay > 0; }

void AttachedView::attach(View* view) {
  const kvpm::MutexLock lock(mutex_);
  view_ = view;
  while (isEarlierViewVisitedElsewhere()) left_.wait(mutex_);
}

bool AttachedView::isEarlierViewVisitedElsewhere() const {
  const auto self = std::this_thread::get_id();
  return std::any_of(visitors_.begin(), visitors_.end(),
                     [self, present = view_](const Visitor& visitor) {
                       return visitor.view != present && visitor.thread != self;
                     });
}

AttachedView::View* AttachedView::presentView() const {
  const kvpm::MutexLock lock(mutex_);
  return view_;
}

AttachedView::View* AttachedView::enter() {
  const kvpm::MutexLock lock(mutex_);
  if (view_ != nullptr) visitors_.push_back({view_, std::this_thread::get_id()});
  return view_;
}

void AttachedView::leave(View* view) {
  const kvpm::MutexLock lock(mutex_);
  visitors_.erase(
      std::find(visitors_.begin(), visitors_.end(), Visitor{view, std::this_thread::get_id()}));
  left_.notify_all();
}

}  // namespace download
