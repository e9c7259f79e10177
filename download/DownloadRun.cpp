// The steps of one run, in the order in which they are taken.

#include <QDir>

#include "KPX/OSUtilities.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "VeskPlayerX/PlayerInterface.h"
#include "download/HttpDownloadThreadImpl.h"
#include "download/LocalFilePlacement.h"
#include "download/SpaceCheck.h"
#include "kvpm/PathTools.h"
#include "kvpm/StringTools.h"

using Impl = HttpDownloadThread::HttpDownloadThreadImpl;
using kvpm::PathTools;
using kvpm::StringTools;

namespace {

constexpr int kSessionStarted = 1;
constexpr int kWholeFile = 100;  // percent

std::string utf8(const QString& text) { return text.toStdString(); }

}  // namespace

void Impl::runItem() {
  const bool stopped = !state_.isRunning();  // between pick and start
  const bool loaded = !stopped && loadLibrary();
  if (item_ == nullptr || (!stopped && !loaded)) {
    fail();
    return;
  }
  if (stopped) return;
  Transfer transfer;
  const bool ready = findSource(transfer) && measure(transfer) && choosePlace(transfer) &&
                     checkPresentFile() && state_.isRunning();
  if (ready) fetch(transfer);
}

bool Impl::findSource(Transfer& transfer) {
  if (item_->getEncrypted()) return authorise(transfer);
  transfer.url = StringTools::wStringToString(item_->getUrl());
  return true;
}

bool Impl::measure(const Transfer& transfer) {
  item_->setStatus(DownloadStatusDownloading);
  if (!item_->getEncrypted()) totalSize_ = owner_.getTotalMediaSize(transfer.url);
  if (totalSize_ != 0) return state_.isRunning();
  if (state_.reach(DownloadStatusFailed)) reportStatus(DownloadStatusFailed);
  return false;
}

bool Impl::choosePlace(const Transfer& transfer) {
  if (item_->getPath().empty()) usePath(getLocalFilePath(transfer.url));
  const std::wstring path = download::freePathLike(item_->getPath(), &PathTools::fileExists);
  if (path != item_->getPath()) usePath(path);
  const bool fresh = !PathTools::fileExists(path) && item_->getPercentDownloaded() == 0;
  return !fresh || claimMediaFolder();
}

/// A fresh download always goes to the media folder, and needs room there and where it arrives.
bool Impl::claimMediaFolder() {
  const std::wstring path =
      download::mediaFolderPrefix() + PathTools::getFileName(item_->getPath());
  reportPath(path);
  item_->setPath(path);
  const std::uint64_t need = download::spaceForFreshDownload(totalSize_);
  for (const QString& folder : {QDir::toNativeSeparators(download::mediaFolder()),
                                VeskPlayerX::OSUtilities::getTempPath()}) {
    if (download::lacksSpace(folder, need)) return tooLittleSpace(folder.toStdWString());
  }
  return true;
}

bool Impl::checkPresentFile() {
  const std::wstring path = item_->getPath();
  const std::uint64_t present = PathTools::getFileSize(path);
  item_->setSize(totalSize_);
  tellManager([&](auto& manager) { manager.updateSize(item_->getId(), totalSize_); });
  const std::uint64_t available = PathTools::getSpaceAvailable(PathTools::getDirectory(path));
  if (download::missingBytes(totalSize_, present) > available) return tooLittleSpace(path);
  if (!download::isComplete(totalSize_, present)) return true;
  if (!state_.reach(DownloadStatusCompleted)) return false;
  item_->setPercentDownloaded(kWholeFile);
  tellManager([&](auto& manager) { manager.updateDownloadProgress(item_->getId(), kWholeFile); });
  reportStatus(DownloadStatusCompleted);
  return false;
}

void Impl::fetch(Transfer& transfer) {
  describe(transfer);
  if (!state_.isRunning()) return;  // whoever was told has stopped the run
  startSession(transfer);
  // After a refused start the manager sees 6, then 3, then 6 again.
  if (state_.status() != DownloadStatusStopped) reportStatus(DownloadStatusDownloading);
  openSession();
  state_.waitForOutcome();
  closeSession();
  if (state_.status() == DownloadStatusCompleted) finishCompleted();
  if (state_.status() != DownloadStatusStopped) reportStatus(state_.status());
  openUid_ = 0;
}

void Impl::describe(Transfer& transfer) {
  const unsigned int id = item_->getId();
  KPB::DownloadInfo& info = transfer.info;
  info.setDownloadDirectory(utf8(VeskPlayerX::OSUtilities::getTempPath()));
  info.setOutputFilename(StringTools::wStringToString(PathTools::getFileName(item_->getPath())));
  info.setMoviesDirectory(utf8(download::mediaFolder()));
  info.setDownloadId(id);
  info.setTitle(StringTools::wStringToString(item_->getTitle()));
  item_->setDownloadInfo(info);
  tellManager([&](auto& manager) { manager.setDownloadInfo(id, info); });
}

void Impl::startSession(const Transfer& transfer) {
  {
    const kvpm::MutexLock lock(callbackMutex_);
    gate_.expect();
  }
  unsigned long long uid = 0;
  if (library_->get()->startSession(transfer.url, transfer.info, &uid) == kSessionStarted) {
    item_->setUID(uid);
    openUid_ = uid;
    return;
  }
  if (!state_.reach(DownloadStatusFailed)) return;
  view_.notify(
      [&](auto& view) { view.downloadUrlFailed(StringTools::stringToWString(transfer.url)); });
  reportStatus(DownloadStatusFailed);
}

/// From here on reports are dealt with as they come. Not earlier: the manager has to know of the
/// transfer before it hears of its progress, since it would take a wish to play for a restart.
void Impl::openSession() {
  const kvpm::MutexLock lock(callbackMutex_);
  for (const download::LibraryReport& report : gate_.open(item_->getUID())) dealWith(report);
}

void Impl::closeSession() {
  const kvpm::MutexLock lock(callbackMutex_);
  gate_.close();
}

void Impl::finishCompleted() {
  tellManager([&](auto& manager) { manager.updateDownloadProgress(item_->getId(), kWholeFile); });
  // A stop that comes meanwhile leaves the outcome and stops the session by itself.
  if (!playAsWished() && !state_.isStopping()) releaseUnlessPlaying();
}

void Impl::releaseUnlessPlaying() {
  const auto player = load<VeskPlayerX::PlayerInterface>(VeskPlayerX::DIN_Player);
  if (player == nullptr) return;
  if (player->get()->currentMediaId() != item_->getUID()) stopDownload(item_->getUID());
}

bool Impl::fail() {
  state_.reach(DownloadStatusFailed);
  return false;
}

bool Impl::tooLittleSpace(const std::wstring& where) {
  if (!state_.reach(DownloadStatusFailed)) return false;
  view_.notify([&](auto& view) { view.notEnoughSpace(where); });
  return false;
}

void Impl::reportStatus(DownloadStatusEnumType status) {
  tellManager([&](auto& manager) { manager.updateStatus(item_->getId(), status); });
}

void Impl::usePath(const std::wstring& path) {
  item_->setPath(path);
  reportPath(path);
}

void Impl::reportPath(const std::wstring& path) {
  tellManager([&](auto& manager) { manager.updatePath(item_->getId(), path); });
}
