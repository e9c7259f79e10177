#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"
#include "VeskPlayerX/ZPSServicesInterface.h"
#include "tests/support/fakes/EventLog.h"

namespace support {

/// The online services without a network: answers as a test tells it to.
///
/// Log lines: "services.readTicket PATH", "services.isReady A B C", "services.authorize ID SLOT",
/// "services.showError DETAILS true|false", "services.confirm TICKETID BYTES".
/// Owner: the test; outlives its users. Threads: any.
class FakeServices : public VeskPlayerX::ZPSServicesInterface {
 public:
  explicit FakeServices(EventLog& log) : log_(log) {}

  /// The records that each `readTicket` hands out; none at first.
  void setTicketRecords(std::vector<VeskDrmTicketData> records) {
    const std::lock_guard lock(mutex_);
    records_.push_back(std::move(records));
  }

  void setReady(bool ready) {
    const std::lock_guard lock(mutex_);
    ready_ = ready;
  }

  /// Answers of the coming authorisations in order; the last one stays.
  void setAnswers(std::deque<VeskDrmDownloadAuthorization> answers) {
    const std::lock_guard lock(mutex_);
    answers_ = std::move(answers);
  }

  /// Runs inside each authorisation, before its answer; for a service that takes its time.
  void whileAuthorizing(std::function<void()> action) {
    const std::lock_guard lock(mutex_);
    whileAuthorizing_ = std::move(action);
  }

  std::vector<VeskDrmTicketData*> readTicket(const std::wstring& path) override {
    log_.add("services.readTicket " + narrow(path));
    const std::lock_guard lock(mutex_);
    std::vector<VeskDrmTicketData*> handedOut;
    if (records_.empty()) return handedOut;
    for (VeskDrmTicketData& record : records_.back()) handedOut.push_back(&record);
    return handedOut;
  }

  bool isReady(int first, int second, int third) override {
    log_.add("services.isReady " + std::to_string(first) + " " + std::to_string(second) + " " +
             std::to_string(third));
    const std::lock_guard lock(mutex_);
    return ready_;
  }

  void authorizeDownload(VeskPlayerX::DownloadItemInterface* item,
                         VeskDrmDownloadAuthorization& answer) override {
    log_.add("services.authorize " + std::to_string(item->getId()) + " " +
             std::to_string(item->getSlotNumber()));
    std::function<void()> action;
    {
      const std::lock_guard lock(mutex_);
      action = whileAuthorizing_;
    }
    if (action) action();
    const std::lock_guard lock(mutex_);
    if (answers_.empty()) return;
    answer = answers_.front();
    if (answers_.size() > 1) answers_.pop_front();
  }

  void showError(const std::wstring& details, bool interactive) override {
    log_.add("services.showError " + narrow(details) + (interactive ? " true" : " false"));
  }

  void confirmDownload(long ticketId, unsigned long long bytes) override {
    log_.add("services.confirm " + std::to_string(ticketId) + " " + std::to_string(bytes));
  }

 private:
  EventLog& log_;
  std::mutex mutex_;
  std::deque<std::vector<VeskDrmTicketData>> records_;  // what was handed out stays
  bool ready_ = true;
  std::deque<VeskDrmDownloadAuthorization> answers_;
  std::function<void()> whileAuthorizing_;
};

}  // namespace support
