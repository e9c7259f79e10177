// The steps of one run, in the order in which they are taken.

#include "KPX/OSUtilities.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "download/HttpDownloadThreadImpl.h"
#include "download/LocalFilePlacement.h"
#include "download/Placement.h"
#include "kvpm/PathTools.h"
#include "kvpm/StringTools.h"
#include "persistence/URLEscape.h"

using Impl = HttpDownloadThread::HttpDownloadThreadImpl;
using kvpm::StringTools;
using VeskPlayerX::PlayerInterface;

namespace {

constexpr int kSessionStarted = 1;
constexpr int kWholeFile = 100;  // percent

std::string utf8(const QString& text) { return text.toStdString(); }

}  // namespace

void Impl::takeSteps() {
  const bool stopped = !state_.isRunning();  // between pick and start
  const bool loaded = !stopped && loadLibrary();
  if (loaded) releaseLastSession();
  if (item_ == nullptr || (!stopped && !loaded)) {
    fail();
    return;
  }
  if (stopped) return;
  Transfer transfer;
  if (!findSource(transfer) || !measure(transfer)) return;
  download::Placement placement(*item_, totalSize_, host_, state_);
  if (placement.findPlace(transfer.url) && state_.isRunning()) fetch(transfer);
}

bool Impl::findSource(Transfer& transfer) {
  if (item_->getEncrypted()) return authorise(transfer);
  transfer.url = StringTools::wStringToString(item_->getUrl());
  return true;
}

bool Impl::authorise(Transfer& transfer) {
  const auto granted = authorisation_.request(item_);
  if (!granted) return fail();
  transfer.url = URLEscape::escape(granted->url);
  transfer.info.setTempUsername(granted->tempUsername);
  transfer.info.setTempPassword(granted->tempPassword);
  totalSize_ = granted->totalSize;
  const auto rights = download::decodeRights(granted->strdChunkBase64);
  transfer.info.setSTRDChunk(rights.data(), rights.size());
  return true;
}

bool Impl::measure(const Transfer& transfer) {
  item_->setStatus(DownloadStatusDownloading);
  if (!item_->getEncrypted()) totalSize_ = owner_.getTotalMediaSize(transfer.url);
  if (totalSize_ != 0) return state_.isRunning();
  if (state_.reach(DownloadStatusFailed)) reportStatus(DownloadStatusFailed);
  return false;
}

void Impl::fetch(Transfer& transfer) {
  describe(transfer);
  if (!state_.isRunning()) return;  // stopped from within that report
  startSession(transfer);
  // After a refused start the manager sees 6, then 3, then 6 again.
  if (state_.status() != DownloadStatusStopped) reportStatus(DownloadStatusDownloading);
  openGate();
  state_.waitForOutcome();
  closeGate();
  if (state_.status() == DownloadStatusCompleted) finishCompleted();
  if (state_.status() != DownloadStatusStopped) reportStatus(state_.status());
  if (state_.isStopping()) sessionUid_ = 0;  // that stop releases it
}

void Impl::describe(Transfer& transfer) {
  const unsigned int id = item_->getId();
  KPB::DownloadInfo& info = transfer.info;
  info.setDownloadDirectory(utf8(VeskPlayerX::OSUtilities::getTempPath()));
  info.setOutputFilename(
      StringTools::wStringToString(kvpm::PathTools::getFileName(item_->getPath())));
  info.setMoviesDirectory(utf8(download::mediaFolder()));
  info.setDownloadId(id);
  info.setTitle(StringTools::wStringToString(item_->getTitle()));
  item_->setDownloadInfo(info);
  host_.report([&](auto& manager) { manager.setDownloadInfo(id, info); });
}

void Impl::startSession(const Transfer& transfer) {
  {
    const kvpm::MutexLock lock(callbackMutex_);
    gate_.expect();
  }
  unsigned long long uid = 0;
  if (library_->get()->startSession(transfer.url, transfer.info, &uid) == kSessionStarted) {
    item_->setUID(uid);
    sessionUid_ = uid;
    return;
  }
  if (!state_.reach(DownloadStatusFailed)) return;
  host_.view().notify(
      [&](auto& view) { view.downloadUrlFailed(StringTools::stringToWString(transfer.url)); });
  reportStatus(DownloadStatusFailed);
}

/// From here on reports are handled as they come. Not earlier: the manager has to know of the
/// transfer before it hears of its progress, since it would take a request to play for a restart.
void Impl::openGate() {
  const kvpm::MutexLock lock(callbackMutex_);
  for (const download::LibraryReport& report : gate_.open(item_->getUID())) handle(report);
}

void Impl::closeGate() {
  const kvpm::MutexLock lock(callbackMutex_);
  gate_.close();
}

void Impl::finishCompleted() {
  host_.report([&](auto& manager) { manager.updateDownloadProgress(item_->getId(), kWholeFile); });
  if (playIfRequested()) {
    sessionUid_ = 0;  // the player releases it
    return;
  }
  if (state_.isStopping()) return;
  const auto player = host_.load<PlayerInterface>(VeskPlayerX::DIN_Player);
  if (player != nullptr) releaseSession(player->get());
}

/// Releases the session unless `player`, which may be null, has its film open and will do that.
void Impl::releaseSession(PlayerInterface* player) {
  const unsigned long long uid = std::exchange(sessionUid_, 0);
  if (uid == 0) return;
  if (player == nullptr || player->currentMediaId() != uid) stopDownload(uid);
}

/// A session that broke, or that completed while there was no player, is kept beyond its run: the
/// view and the player are only now told of that end, and may still use what has arrived.
void Impl::releaseLastSession() {
  if (sessionUid_ == 0) return;
  const auto player = host_.load<PlayerInterface>(VeskPlayerX::DIN_Player);
  releaseSession(player != nullptr ? player->get() : nullptr);
}

bool Impl::fail() {
  state_.reach(DownloadStatusFailed);
  return false;
}

void Impl::reportStatus(DownloadStatusEnumType status) {
  host_.report([&](auto& manager) { manager.updateStatus(item_->getId(), status); });
}
