// What the download library tells of its session, on its own threads.

#include <utility>

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
  const kvpm::MutexLock lock(callbackMutex_);
  reporting_ = std::this_thread::get_id();
  try {
    if (gate_.admits(report)) dealWith(report);
  } catch (...) {  // the library must not see it
    state_.reach(DownloadStatusFailed);
  }
  reporting_ = std::thread::id();
}

void Impl::dealWith(const LibraryReport& report) {
  if (!state_.isRunning()) return;
  const unsigned int id = item_->getId();
  switch (report.kind) {
    case LibraryReport::Kind::kProgress:
      takeProgress(report.percent);
      break;
    case LibraryReport::Kind::kComplete:
      if (!state_.reach(DownloadStatusCompleted)) break;
      tellManager([&](auto& manager) { manager.setPlayable(id, true); });
      break;
    case LibraryReport::Kind::kBroken:
      if (state_.reach(DownloadStatusFailed)) takeBroken();
      break;
  }
}

void Impl::takeProgress(int percent) {
  if (percent < 0 || percent > 100) return;
  const unsigned int id = item_->getId();
  tellManager([&](auto& manager) { manager.updateDownloadProgress(id, percent); });
  // Whoever is told may have stopped the run.
  if (percent <= kPlayableAbove || !state_.isRunning()) return;
  tellManager([&](auto& manager) { manager.setPlayable(id, true); });
  if (state_.isRunning()) playAsWished();
}

void Impl::takeBroken() {
  view_.notify([&](auto& view) { view.downloadBroken(item_->getPath()); });
  item_->setStatus(DownloadStatusFailed);
  view_.notify([&](auto& view) { view.refreshItem(item_->getId()); });
}

/// True when the item wished to be played and is being played.
bool Impl::playAsWished() {
  if (!item_->getAutoProgressivePlayback() || !play()) return false;
  item_->setAutoProgressivePlayback(false);
  return true;
}

/// Hands the film to the player. That may need a lock whose holder is waiting for this very run to
/// stop, so the call is made on a thread of its own and a stop ends the wait for it. False when it
/// was not played, or not yet.
bool Impl::play() {
  const Playback playback = this->playback();
  if (!playback) return false;
  const auto played = std::make_shared<std::atomic<bool>>(false);
  const bool begun =
      plays_.start([playback, id = item_->getId(), played] { *played = playback(id); });
  return begun && state_.waitUnlessStopped([this] { return !plays_.isBusy(); }) && *played;
}

/// Empty without a manager to ask.
Impl::Playback Impl::playback() {
  if (playback_) return playback_;
  Manager* const manager = manager_;
  if (manager == nullptr) return nullptr;
  return [manager](unsigned int id) { return manager->play(id); };
}
