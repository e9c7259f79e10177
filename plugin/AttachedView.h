#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "VeskPlayerX/DownloadManagerViewInterface.h"

namespace plugin {

/// The host's view, as long as there is one.
///
/// Safe on all threads. The view is not owned; once it is detached, no call to it is running and
/// none will come, so the host may delete it.
class AttachedView {
 public:
  using View = VeskPlayerX::DownloadManagerViewInterface;

  AttachedView() = default;
  AttachedView(const AttachedView&) = delete;
  AttachedView& operator=(const AttachedView&) = delete;

  /// Attaches `view`, null for none, and waits until no visit to the earlier one runs on another
  /// thread. A visit of the calling thread itself, which this call is part of, is not waited for.
  /// Called by one thread at a time, with no lock held that a visit could ask for.
  void attach(View* view);

  /// Runs `visit` with the view on the calling thread, without any lock held by this object; does
  /// nothing when there is no view. May be nested.
  void visit(const std::function<void(View&)>& visit);

 private:
  struct Visit {
    View* view;
    std::thread::id thread;
    bool operator==(const Visit&) const = default;
  };

  View* enter();
  void leave(View* view);
  bool isVisitedElsewhere(View* view) const;

  std::mutex mutex_;
  std::condition_variable left_;
  View* view_ = nullptr;       // guarded by mutex_
  std::vector<Visit> visits_;  // running now, guarded by mutex_
};

}  // namespace plugin
