#include "download/ReportHandler.h"

#include <chrono>

#include "download/BackgroundThread.h"

namespace download {
namespace {

constexpr int kPlayableAbove = 5;  // percent

// How long a report waits for its session to be open.
constexpr std::chrono::milliseconds kLongestOpening{100};

}  // namespace

void ReportHandler::expect() {
  const kvpm::MutexLock lock(callbackMutex_);
  gate_.expect();
  ++expected_;
  opener_ = std::this_thread::get_id();
  isOpeningAwaited_ = true;
}

void ReportHandler::open(Item& item) {
  const kvpm::MutexLock lock(callbackMutex_);
  item_ = &item;
  for (const LibraryReport& report : gate_.open(item.getUID())) handle(report);
  openedOrClosed_.notify_all();
}

void ReportHandler::close() {
  const kvpm::MutexLock lock(callbackMutex_);
  gate_.close();
  item_ = nullptr;
  openedOrClosed_.notify_all();
}

void ReportHandler::receive(const LibraryReport& report) {
  const BackgroundThread mark;
  const kvpm::MutexLock lock(callbackMutex_);
  reportingThread_ = std::this_thread::get_id();
  try {
    if (gate_.admits(report)) handle(report);
  } catch (...) {  // the library must not see it
    state_.reach(DownloadStatusFailed);
  }
  reportingThread_ = std::thread::id();
  waitForOpening();
}

void ReportHandler::waitForOpening() {
  if (!isOpeningAwaited_ || opener_ == std::this_thread::get_id()) return;
  const bool isDecided = openedOrClosed_.wait_for(
      callbackMutex_, kLongestOpening, [this, session = expected_]() KVPM_REQUIRES(callbackMutex_) {
        return session != expected_ || !gate_.isExpecting();
      });
  if (!isDecided) isOpeningAwaited_ = false;
}

void ReportHandler::passTurn() { const kvpm::MutexLock turn(callbackMutex_); }

void ReportHandler::handle(const LibraryReport& report) {
  if (!state_.isRunning()) return;
  const unsigned int id = item_->getId();
  switch (report.kind) {
    case LibraryReport::Kind::kProgress:
      handleProgress(report.percent);
      break;
    case LibraryReport::Kind::kComplete:
      if (!state_.reach(DownloadStatusCompleted)) break;
      host_.report([&](auto& manager) { manager.setPlayable(id, true); });
      break;
    case LibraryReport::Kind::kBroken:
      if (state_.reach(DownloadStatusFailed)) handleBroken();
      break;
  }
}

void ReportHandler::handleProgress(int percent) {
  if (percent < 0 || percent > 100) return;
  const unsigned int id = item_->getId();
  host_.report([&](auto& manager) { manager.updateDownloadProgress(id, percent); });
  // The run may be stopped from within any of these reports.
  if (percent <= kPlayableAbove || !state_.isRunning()) return;
  host_.report([&](auto& manager) { manager.setPlayable(id, true); });
  // A call that an earlier film has left behind must not hold up the reports of this one: a later
  // report tries again, and so does the end of the run.
  if (state_.isRunning() && !playback_.isBusy()) playback_.playIfRequested(*item_);
}

void ReportHandler::handleBroken() {
  Item& item = *item_;
  host_.view().notify([&](auto& view) { view.downloadBroken(item.getPath()); });
  item.setStatus(DownloadStatusFailed);
  host_.view().notify([&](auto& view) { view.refreshItem(item.getId()); });
}

}  // namespace download
