#include "download/AttachedView.h"

#include <algorithm>

namespace download {

void AttachedView::attach(View* view) {
  const kvpm::MutexLock lock(mutex_);
  view_ = view;
  while (isEarlierViewCalledElsewhere()) callEnded_.wait(mutex_);
}

bool AttachedView::isEarlierViewCalledElsewhere() const {
  const auto self = std::this_thread::get_id();
  return std::any_of(runningCalls_.begin(), runningCalls_.end(),
                     [self, present = view_](const RunningCall& call) {
                       return call.view != present && call.thread != self;
                     });
}

AttachedView::View* AttachedView::presentView() const {
  const kvpm::MutexLock lock(mutex_);
  return view_;
}

AttachedView::View* AttachedView::beginCall() {
  const kvpm::MutexLock lock(mutex_);
  if (view_ != nullptr) runningCalls_.push_back({view_, std::this_thread::get_id()});
  return view_;
}

void AttachedView::endCall(View* view) {
  const kvpm::MutexLock lock(mutex_);
  runningCalls_.erase(std::find(runningCalls_.begin(), runningCalls_.end(),
                                RunningCall{view, std::this_thread::get_id()}));
  callEnded_.notify_all();
}

}  // namespace download
