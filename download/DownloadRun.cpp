// The steps of one run, in the order in which they are taken.

#include "KPX/OSUtilities.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "download/HttpDownloadThreadImpl.h"
#include "download/LocalFilePlacement.h"
#include "download/MediaSize.h"
#include "download/Placement.h"
#include "kvpm/PathTools.h"
#include "kvpm/StringTools.h"
#include "persistence/URLEscape.h"

using Impl = HttpDownloadThread::HttpDownloadThreadImpl;
using kvpm::StringTools;

namespace {

constexpr int kWholeFile = 100;  // percent

std::string utf8(const QString& text) { return text.toStdString(); }

}  // namespace

void Impl::takeSteps() {
  const bool stopped = !state_.isRunning();  // between pick and start
  const bool loaded = !stopped && session_.load(*this);
  if (loaded) session_.releaseLast();
  if (item_ == nullptr || (!stopped && !loaded)) {
    state_.reach(DownloadStatusFailed);
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
  if (!granted) {
    state_.reach(DownloadStatusFailed);
    return false;
  }
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
  if (!item_->getEncrypted())
    totalSize_ = download::totalMediaSize(transfer.url, state_.cancelToken());
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
  // Not earlier: the manager has to know of the transfer before it hears of its progress, since it
  // would take a request to play for a restart.
  reports_.open(*item_);
  state_.waitForOutcome();
  reports_.close();
  if (state_.status() == DownloadStatusCompleted) finishCompleted();
  if (state_.status() != DownloadStatusStopped) reportStatus(state_.status());
  if (state_.isStopping()) session_.leave();  // to that stop
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
  reports_.expect();
  if (const auto uid = session_.start(transfer.url, transfer.info)) {
    item_->setUID(*uid);
    return;
  }
  if (!state_.reach(DownloadStatusFailed)) return;
  host_.view().notify(
      [&](auto& view) { view.downloadUrlFailed(StringTools::stringToWString(transfer.url)); });
  reportStatus(DownloadStatusFailed);
}

void Impl::finishCompleted() {
  host_.report([&](auto& manager) { manager.updateDownloadProgress(item_->getId(), kWholeFile); });
  if (playback_.playIfRequested(*item_)) {
    session_.leave();  // to the player
    return;
  }
  if (state_.isStopping()) return;
  const auto player = host_.load<VeskPlayerX::PlayerInterface>(VeskPlayerX::DIN_Player);
  if (player != nullptr) session_.release(player->get());
}

void Impl::reportStatus(DownloadStatusEnumType status) {
  host_.report([&](auto& manager) { manager.updateStatus(item_->getId(), status); });
}
