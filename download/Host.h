#pragma once

#include <atomic>
#include <memory>

#include "KPIM/Helper.h"
#include "VeskPlayerX/DownloadManagerInterface.h"
#include "download/AttachedView.h"

namespace download {

/// The host as the worker knows it: its plug-ins, the manager and the view.
///
/// Nothing is owned. The manager and the view may be exchanged while the worker runs, and either
/// may be missing. Owner: the worker. Threads: any.
class Host {
 public:
  using Manager = VeskPlayerX::DownloadManagerInterface;

  explicit Host(KPIM::Context* context) : context_(context) {}

  /// Waits as `AttachedView::attach` does.
  void setInterfaces(Manager* manager, AttachedView::View* view) {
    manager_ = manager;
    view_.attach(view);
  }

  Manager* manager() const { return manager_; }
  AttachedView& view() { return view_; }

  /// Calls `report(manager)` when there is a manager.
  template <class Report>
  void report(Report report) {
    if (Manager* const manager = manager_) report(*manager);
  }

  /// As `KPIM::load`, with the context of the module.
  template <class I>
  std::unique_ptr<KPIM::Helper<I>> load(const char* interfaceId) const {
    return KPIM::load<I>(context_, interfaceId);
  }

 private:
  KPIM::Context* const context_;
  std::atomic<Manager*> manager_{nullptr};
  AttachedView view_;
};

}  // namespace download
