#include <QDir>
#include <QString>

#include "VeskPlayerX/InterfaceIds.h"
#include "plugin/DownloadManagerImpl.h"
#include "plugin/HostEventLoop.h"
#include "plugin/PlaybackRules.h"
#include "plugin/StatusGroups.h"

using Item = VeskPlayerX::DownloadItemInterface;
using Player = KPIM::Helper<VeskPlayerX::PlayerInterface>;

bool DownloadManager::DownloadManagerImpl::play(unsigned int id) {
  const std::optional<DownloadStatusEnumType> status = startPlayback(id);
  if (!status) return false;
  Player player(VeskPlayerX::DIN_Player);
  if (!plugin::loadService(player, context_, VeskPlayerX::DIN_Player)) return false;
  if (!waitUntilFlowing(id)) return false;
  const auto location = locationOf(id, *status == DownloadStatusCompleted);
  if (location) player->openMedia(QString::fromStdWString(*location));
  return location.has_value();
}

/// Sees to it that the item is flowing, or about to, unless it is complete. Returns the state to go
/// by; nothing when there is not enough of the film yet.
std::optional<DownloadStatusEnumType> DownloadManager::DownloadManagerImpl::startPlayback(
    unsigned int id) {
  const plugin::OperationHold control(controlLock_);
  const plugin::OperationHold download(downloadLock_);
  const std::optional<PlaybackState> state = playbackState(id);
  if (!state) return std::nullopt;
  const DownloadStatusEnumType status =
      plugin::needsRestart(state->status) ? restartWith(id, state->percent) : state->status;
  if (paused_) resume();
  return plugin::isPlayable(status, state->percent) ? std::make_optional(status) : std::nullopt;
}

std::optional<DownloadManager::DownloadManagerImpl::PlaybackState>
DownloadManager::DownloadManagerImpl::playbackState(unsigned int id) {
  const kvpm::CritLock lock(queueLock_);
  const Item* const item = queue_.find(id);
  if (item == nullptr) return std::nullopt;
  return PlaybackState{item->getStatus(), item->getPercentDownloaded()};
}

/// Parks the queue with the item at its top. A transfer that completes before it is stopped has
/// done all there is to do.
DownloadStatusEnumType DownloadManager::DownloadManagerImpl::restartWith(unsigned int id,
                                                                         int percent) {
  pause();
  if (statusOf(id) == DownloadStatusCompleted) return DownloadStatusCompleted;
  requeueForHost(id);
  if (percent < plugin::kPlayablePercent) {
    changeItem(id, [](Item& item) { item.setAutoProgressivePlayback(true); });
  }
  moveVideoToTop(id);
  return DownloadStatusQueued;
}

/// Waits, while the host's event loop runs, until the transfer has begun. False when it never will:
/// the item or the manager has gone, or the caller keeps the scheduler from picking the item.
bool DownloadManager::DownloadManagerImpl::waitUntilFlowing(unsigned int id) {
  while (!closing_) {
    const plugin::EventCount::Ticket ticket = events_.ticket();
    const std::optional<DownloadStatusEnumType> status = statusOf(id);
    if (!status) return false;
    if (!plugin::isAboutToFlow(*status)) return true;
    if (controlLock_.isHeldByCaller() || downloadLock_.isHeldByCaller()) return false;
    plugin::HostEventLoop::process();
    events_.wait(ticket, plugin::HostEventLoop::longestSleep());
  }
  return false;
}

/// Where the player finds the film; nothing when the item has gone.
std::optional<std::wstring> DownloadManager::DownloadManagerImpl::locationOf(unsigned int id,
                                                                             bool isComplete) {
  const kvpm::CritLock lock(queueLock_);
  const Item* const item = queue_.find(id);
  if (item == nullptr) return std::nullopt;
  return isComplete ? item->getPath() : item->getUrl();
}

bool DownloadManager::DownloadManagerImpl::playRunning(unsigned int id) {
  const std::optional<std::wstring> location = locationOfRunning(id);
  if (closing_ || !location) return false;
  Player player(VeskPlayerX::DIN_Player);
  if (!plugin::loadService(player, context_, VeskPlayerX::DIN_Player)) return false;
  player->openMedia(QString::fromStdWString(*location));
  return true;
}

/// Nothing when the item is not the one whose transfer runs, or is not to be played now.
std::optional<std::wstring> DownloadManager::DownloadManagerImpl::locationOfRunning(
    unsigned int id) {
  const kvpm::CritLock lock(queueLock_);
  const Item* const item = run_.id == id ? queue_.find(id) : nullptr;
  if (item == nullptr || !plugin::isWanted(item->getStatus())) return std::nullopt;
  if (!plugin::isPlayable(item->getStatus(), item->getPercentDownloaded())) return std::nullopt;
  return item->getStatus() == DownloadStatusCompleted ? item->getPath() : item->getUrl();
}

bool DownloadManager::DownloadManagerImpl::resumePlaybackForUrl(const std::wstring& url) {
  const std::optional<Known> item = [&] {
    const kvpm::CritLock lock(queueLock_);
    return known(queue_.findUrl(url));
  }();
  return item && play(item->id);
}

void DownloadManager::DownloadManagerImpl::resumeDownloadingFile(const std::wstring& path) {
  const plugin::OperationHold control(controlLock_);
  const plugin::OperationHold download(downloadLock_);
  const std::optional<Known> item = [&] {
    const kvpm::CritLock lock(queueLock_);
    return known(queue_.findPath(path, pathSeparator()));
  }();
  if (item && plugin::isCandidate(item->status) && item->status != DownloadStatusHeld) {
    moveToTop(item->id);
  }
}

void DownloadManager::DownloadManagerImpl::tellPlayerOfFinished(const std::wstring& path,
                                                                unsigned long long uid) {
  Player player(VeskPlayerX::DIN_Player);
  if (!plugin::loadService(player, context_, VeskPlayerX::DIN_Player)) return;
  player->downloadFinished(QDir::fromNativeSeparators(QString::fromStdWString(path)), uid);
}
