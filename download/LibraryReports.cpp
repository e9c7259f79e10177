// What the download library tells of its session, on its own threads.

#include <utility>

#include "download/BackgroundThread.h"
#include "download/HttpDownloadThreadImpl.h"

using Impl = HttpDownloadThread::HttpDownloadThreadImpl;
using download::LibraryReport;

namespace {

constexpr int kPlayableAbove = 5;  // percent

}  // namespace

void Impl::httpTransferBegan(unsigned long long, const std::basic_string<unsigned char>&) {
  const kvpm::MutexLock turn(callbackMutex_);
}

void Impl::httpHeaderReceived(unsigned long long, const std::string&) {
  const kvpm::MutexLock turn(callbackMutex_);
}

void Impl::updateProgress(unsigned long long uid, int percent) {
  receive({LibraryReport::Kind::kProgress, uid, percent});
}

void Impl::httpTransferComplete(unsigned long long uid) {
  receive({LibraryReport::Kind::kComplete, uid, 0});
}

void Impl::httpTransferBroke(unsigned long long uid, int) {
  receive({LibraryReport::Kind::kBroken, uid, 0});
}

void Impl::receive(const LibraryReport& report) {
  const download::BackgroundThread mark;
  const kvpm::MutexLock lock(callbackMutex_);
  reportingThread_ = std::this_thread::get_id();
  try {
    if (gate_.admits(report)) handle(report);
  } catch (...) {  // the library must not see it
    state_.reach(DownloadStatusFailed);
  }
  reportingThread_ = std::thread::id();
}

void Impl::handle(const LibraryReport& report) {
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

void Impl::handleProgress(int percent) {
  if (percent < 0 || percent > 100) return;
  const unsigned int id = item_->getId();
  host_.report([&](auto& manager) { manager.updateDownloadProgress(id, percent); });
  // The run may be stopped from within any of these reports.
  if (percent <= kPlayableAbove || !state_.isRunning()) return;
  host_.report([&](auto& manager) { manager.setPlayable(id, true); });
  // A call that an earlier film has left behind must not hold up the reports of this one: a later
  // report tries again, and so does the end of the run.
  if (state_.isRunning() && !playThread_.isBusy()) playIfRequested();
}

void Impl::handleBroken() {
  host_.view().notify([&](auto& view) { view.downloadBroken(item_->getPath()); });
  item_->setStatus(DownloadStatusFailed);
  host_.view().notify([&](auto& view) { view.refreshItem(item_->getId()); });
}

/// True when automatic playback was requested and the film plays now. Handing it to the player may
/// need a lock whose holder is waiting for this very run to stop, so the call is made on
/// a side thread.
bool Impl::playIfRequested() {
  const Playback play = playback();
  if (!item_->getAutoProgressivePlayback() || !play) return false;
  const auto playing = playThread_.ask([play, id = item_->getId()] { return play(id); });
  if (!playing.value_or(false)) return false;
  item_->setAutoProgressivePlayback(false);
  return true;
}

/// Empty when there is neither a function nor a manager to call.
Impl::Playback Impl::playback() const {
  if (playback_) return playback_;
  auto* const manager = host_.manager();
  if (manager == nullptr) return nullptr;
  return [manager](unsigned int id) { return manager->play(id); };
}
