#include "playerx/transfers/ReportDelivery.h"

#include <utility>

#include "playerx/platform/QuietThread.h"

namespace playerx::transfers {

ReportDelivery::ReportDelivery() : thread_(startQuietThread([this] { run(); })) {}

ReportDelivery::~ReportDelivery() {
  {
    const GuardLock lock(mutex_);
    isClosing_ = true;
  }
  changed_.notifyAll();
  thread_.join();
}

void ReportDelivery::setCallback(KPB::DownloadCallback* callback) {
  const GuardLock lock(mutex_);
  callback_ = callback;
  if (callback != nullptr || std::this_thread::get_id() == thread_.get_id()) return;
  while (isRunning_) changed_.wait(mutex_);
}

void ReportDelivery::began(const std::shared_ptr<Session>& session) {
  post({session, Kind::kBegan, 0, {}});
}

void ReportDelivery::header(const std::shared_ptr<Session>& session, std::string line) {
  post({session, Kind::kHeader, 0, std::move(line)});
}

void ReportDelivery::percent(const std::shared_ptr<Session>& session, int percent) {
  post({session, Kind::kPercent, percent, {}});
}

void ReportDelivery::complete(const std::shared_ptr<Session>& session) {
  post({session, Kind::kComplete, 0, {}});
}

void ReportDelivery::broke(const std::shared_ptr<Session>& session, int code) {
  post({session, Kind::kBroke, code, {}});
}

void ReportDelivery::post(Report report) {
  const GuardLock lock(mutex_);
  if (callback_ != nullptr) reports_.push_back(std::move(report));
}

void ReportDelivery::flush() {
  {
    const GuardLock lock(mutex_);
    if (ready_ == reports_.size()) return;
    ready_ = reports_.size();
  }
  changed_.notifyAll();
}

void ReportDelivery::run() {
  Report report;
  KPB::DownloadCallback* callback = nullptr;
  while (waitForNext(report, callback)) {
    deliver(report, *callback);
    delivered();
  }
}

// Waits for the next report that is still of interest; false once the delivery is closing.
bool ReportDelivery::waitForNext(Report& report, KPB::DownloadCallback*& callback) {
  const GuardLock lock(mutex_);
  while (!isClosing_) {
    if (ready_ == 0) {
      changed_.wait(mutex_);
      continue;
    }
    --ready_;
    report = std::move(reports_.front());
    reports_.pop_front();
    callback = callback_;
    if (callback == nullptr || report.session->stopped) continue;
    isRunning_ = true;
    return true;
  }
  return false;
}

void ReportDelivery::deliver(const Report& report, KPB::DownloadCallback& callback) {
  Session& session = *report.session;
  switch (report.kind) {
    case Kind::kBegan:
      return callback.httpTransferBegan(session.uid, {});
    case Kind::kHeader:
      return callback.httpHeaderReceived(session.uid, report.line);
    case Kind::kPercent:
      return callback.updateProgress(session.uid, report.number);
    case Kind::kComplete:
      session.announced = true;
      return callback.httpTransferComplete(session.uid);
    case Kind::kBroke:
      return callback.httpTransferBroke(session.uid, report.number);
  }
}

void ReportDelivery::delivered() {
  {
    const GuardLock lock(mutex_);
    isRunning_ = false;
  }
  changed_.notifyAll();
}

}  // namespace playerx::transfers
