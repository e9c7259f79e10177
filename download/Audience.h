#pragma once

#include <condition_variable>
#include <thread>
#include <vector>

#include "VeskPlayerX/DownloadManagerInterface.h"
#include "VeskPlayerX/DownloadManagerViewInterface.h"
#include "kvpm/Mutex.h"

namespace download {

/// Those whom the worker keeps informed: the manager and, while one is attached, the view.
///
/// Both may be exchanged while the worker runs. Once `set` has returned, no notice is running at
/// the earlier view on another thread, and none will reach it. Questions are not waited for, since
/// they may wait for a user. Owner: the worker. Threads: any.
class Audience {
 public:
  using Manager = VeskPlayerX::DownloadManagerInterface;
  using View = VeskPlayerX::DownloadManagerViewInterface;

  /// Neither is owned; each may be null. Waits for notices that run on other threads.
  void set(Manager* manager, View* view);

  /// Calls `report(manager)` when there is a manager.
  template <class Report>
  void report(Report report) {
    if (Manager* const manager = presentManager()) report(*manager);
  }

  /// Calls `notice(view)` when there is a view.
  template <class Notice>
  void notify(Notice notice) {
    const Visit visit(*this);
    if (visit.view() != nullptr) notice(*visit.view());
  }

  /// Returns `question(view)`, or `withoutView` when there is none.
  template <class Question, class Answer>
  Answer ask(Question question, Answer withoutView) {
    View* const view = presentView();
    return view != nullptr ? question(*view) : withoutView;
  }

  Manager* presentManager() const;

 private:
  /// One notice: the view does not change hands while it lives.
  class Visit {
   public:
    explicit Visit(Audience& audience) : audience_(audience), view_(audience.enter()) {}
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;
    ~Visit() { audience_.leave(); }
    View* view() const { return view_; }

   private:
    Audience& audience_;
    View* const view_;
  };

  struct Visitor {
    std::thread::id thread;
    View* view;
  };

  View* presentView() const;
  View* enter();
  void leave();
  bool isEarlierViewVisited() const KVPM_REQUIRES(mutex_);

  mutable kvpm::Mutex mutex_;
  std::condition_variable_any left_;
  Manager* manager_ KVPM_GUARDED_BY(mutex_) = nullptr;
  View* view_ KVPM_GUARDED_BY(mutex_) = nullptr;
  std::vector<Visitor> visitors_ KVPM_GUARDED_BY(mutex_);
};

}  // namespace download
