#pragma once

#include <condition_variable>
#include <thread>
#include <vector>

#include "VeskPlayerX/DownloadManagerViewInterface.h"
#include "kvpm/Mutex.h"

namespace download {

/// The host's view, as long as one is attached. Every call to the view goes through here.
///
/// Owner: the worker or its manager, one each; the view is not owned. Threads: any. No lock is held
/// while the view is called, and what it throws reaches the caller.
class AttachedView {
 public:
  using View = VeskPlayerX::DownloadManagerViewInterface;

  AttachedView() = default;
  AttachedView(const AttachedView&) = delete;
  AttachedView& operator=(const AttachedView&) = delete;

  /// Replaces the view; null detaches it. Once this returns, no notice is running at an earlier
  /// view on another thread and none will reach it, so the host may delete it. Notices that the
  /// calling thread itself is inside are not waited for. Called with no lock held that a view's
  /// operation could ask for.
  void attach(View* view);

  /// Runs `notice(view)` on the calling thread; does nothing without a view. Notices may be nested.
  template <class Notice>
  void notify(Notice notice) {
    const NoticeCall call(*this);
    if (call.view() != nullptr) notice(*call.view());
  }

  /// Returns `question(view)`, or `withoutView` without one. `attach` does not wait for questions,
  /// which may wait for the user: a view outlives its own answer.
  template <class Question, class Answer>
  Answer ask(Question question, Answer withoutView) {
    View* const view = presentView();
    return view != nullptr ? question(*view) : withoutView;
  }

 private:
  /// One notice, known to `attach` while it lives.
  class NoticeCall {
   public:
    explicit NoticeCall(AttachedView& attached)
        : attached_(attached), view_(attached.beginCall()) {}
    NoticeCall(const NoticeCall&) = delete;
    NoticeCall& operator=(const NoticeCall&) = delete;
    ~NoticeCall() {
      if (view_ != nullptr) attached_.endCall(view_);
    }
    View* view() const { return view_; }

   private:
    AttachedView& attached_;
    View* const view_;
  };

  struct RunningCall {
    View* view;
    std::thread::id thread;
    bool operator==(const RunningCall&) const = default;
  };

  View* presentView() const;
  View* beginCall();
  void endCall(View* view);
  bool isEarlierViewCalledElsewhere() const KVPM_REQUIRES(mutex_);

  mutable kvpm::Mutex mutex_;
  std::condition_variable_any callEnded_;
  View* view_ KVPM_GUARDED_BY(mutex_) = nullptr;
  std::vector<RunningCall> runningCalls_ KVPM_GUARDED_BY(mutex_);
};

}  // namespace download
