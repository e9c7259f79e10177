#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <thread>

#include "KPB/DownloadCallback.h"
#include "playerx/platform/GuardMutex.h"
#include "playerx/transfers/Session.h"

namespace playerx::transfers {

/// Delivers the library's reports to the registered receiver, one at a time, in the order in which
/// they were made, on a thread of its own: a slow receiver delays no transfer.
///
/// Reports of a session that was stopped meanwhile, or made while no receiver is registered, are
/// dropped. All operations may be called from any thread, also from within a report; the destructor
/// not from there. No lock is held while a report runs.
class ReportDelivery {
 public:
  ReportDelivery();
  ReportDelivery(const ReportDelivery&) = delete;
  ReportDelivery& operator=(const ReportDelivery&) = delete;

  /// Drops what has not been delivered and waits for the report that is running.
  ~ReportDelivery();

  /// As `KPB::DownloadInterface::setCallback`.
  void setCallback(KPB::DownloadCallback* callback);

  // Each returns at once; the report is made when `flush` is called. Together they wake the thread
  // once.
  void began(const std::shared_ptr<Session>& session);
  void header(const std::shared_ptr<Session>& session, std::string line);
  void percent(const std::shared_ptr<Session>& session, int percent);
  void complete(const std::shared_ptr<Session>& session);
  void broke(const std::shared_ptr<Session>& session, int code);

  /// Has everything delivered that was posted before.
  void flush();

 private:
  enum class Kind { kBegan, kHeader, kPercent, kComplete, kBroke };
  struct Report {
    std::shared_ptr<Session> session;
    Kind kind = Kind::kBegan;
    int number = 0;
    std::string line;
  };

  static void deliver(const Report& report, KPB::DownloadCallback& callback);
  void post(Report report);
  void run();
  bool waitForNext(Report& report, KPB::DownloadCallback*& callback);
  void delivered();

  GuardMutex mutex_;
  Condition changed_;
  std::deque<Report> reports_ KVPM_GUARDED_BY(mutex_);
  KPB::DownloadCallback* callback_ KVPM_GUARDED_BY(mutex_) = nullptr;
  std::size_t ready_ KVPM_GUARDED_BY(mutex_) = 0;   ///< reports that `flush` has been called for
  bool isRunning_ KVPM_GUARDED_BY(mutex_) = false;  ///< a report is being delivered
  bool isClosing_ KVPM_GUARDED_BY(mutex_) = false;
  std::thread thread_;
};

}  // namespace playerx::transfers
