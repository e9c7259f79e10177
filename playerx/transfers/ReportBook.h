#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "playerx/platform/GuardMutex.h"
#include "playerx/transfers/Session.h"
#include "playerx/transfers/TransferReports.h"

namespace playerx::transfers {

/// The last few hundred sessions of the process and those still running, for questions about them.
/// All operations may be called from any thread.
class ReportBook : public TransferReports {
 public:
  void add(const std::shared_ptr<Session>& session);

  /// The session `uid`, never a refused one; null when it is not remembered.
  std::shared_ptr<Session> find(unsigned long long uid) const;

  bool findByAddress(const std::string& urlUtf8, TransferReport* report) const override;
  bool findByPath(const std::string& pathUtf8, TransferReport* report) const override;

 private:
  bool findLatest(const std::function<bool(const TransferReport&)>& fits,
                  TransferReport* report) const;

  mutable GuardMutex mutex_;
  std::deque<std::shared_ptr<Session>> sessions_ KVPM_GUARDED_BY(mutex_);
};

}  // namespace playerx::transfers
