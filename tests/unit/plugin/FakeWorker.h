#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "download/DownloadThreadInterface.h"
#include "tests/support/fakes/EventLog.h"
#include "tests/unit/plugin/QueueText.h"

/// A worker that downloads nothing: a run lasts until a test ends it or it is stopped.
///
/// Log lines: "worker.prepare", "worker.run TITLE", "worker.stop", "worker.stopDownload UID".
/// Owner: the test. Threads: any.
class FakeWorker : public DownloadThreadInterface {
 public:
  explicit FakeWorker(support::EventLog& log) : log_(log) {}

  /// Ends the present run, or the next one, with this outcome.
  void end(DownloadStatusEnumType outcome) {
    const std::lock_guard lock(mutex_);
    outcome_ = outcome;
    changed_.notify_all();
  }

  VeskPlayerX::DownloadItemInterface* getItem() override { return item_.get(); }

  DownloadStatusEnumType downloadVideo(VeskPlayerX::DownloadItemInterface* item) override {
    std::unique_lock lock(mutex_);
    item_.reset(item);
    running_ = true;
    log_.add("worker.run " + queue_text::titleOf(*item));
    changed_.wait(lock, [this] { return outcome_.has_value(); });
    const DownloadStatusEnumType outcome = *outcome_;
    outcome_.reset();
    running_ = false;
    changed_.notify_all();
    return outcome;
  }

  void stop() override {
    log_.add("worker.stop");
    std::unique_lock lock(mutex_);
    if (!running_) return;
    if (!outcome_) outcome_ = DownloadStatusStopped;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !running_; });
  }

  void setInterfaces(VeskPlayerX::DownloadManagerInterface*,
                     VeskPlayerX::DownloadManagerViewInterface*) override {}
  void stopDownload(unsigned long long uid) override {
    log_.add("worker.stopDownload " + std::to_string(uid));
  }
  void prepare() override { log_.add("worker.prepare"); }
  void close() override {}

 private:
  support::EventLog& log_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::unique_ptr<VeskPlayerX::DownloadItemInterface> item_;
  std::optional<DownloadStatusEnumType> outcome_;
  bool running_ = false;
};
