#include <cstdint>
#include <string>

#include "kvpm/TimeTools.h"
#include "plugin/DownloadManagerImpl.h"
#include "plugin/StatusGroups.h"

namespace {

using Item = VeskPlayerX::DownloadItemInterface;

std::int64_t secondsNow() { return kvpm::TimeTools::getTime() / kvpm::TimeTools::getTimeScale(); }

/// What the player is told of a complete film.
struct Film {
  std::wstring path;
  unsigned long long uid = 0;
};

Film filmOf(const Item& item) { return {item.getPath(), item.getUID()}; }

void recordProgress(Item& item, int percent) {
  const std::int64_t now = secondsNow();
  const auto lastTime = static_cast<std::int64_t>(item.getLastProgressUpdateTime());
  const auto remaining =
      plugin::estimateTimeRemaining({lastTime, now, item.getPercentDownloaded(), percent});
  if (remaining) item.setTimeRemaining(*remaining);
  item.setLastProgressUpdateTime(static_cast<unsigned long>(now));
  item.setPercentDownloaded(percent);
}

}  // namespace

bool DownloadManager::DownloadManagerImpl::changeItem(unsigned int id, const Change& change) {
  const kvpm::CritLock lock(queueLock_);
  Item* const item = queue_.find(id);
  if (item == nullptr) return false;
  change(*item);
  return true;
}

bool DownloadManager::DownloadManagerImpl::changeAndAnnounce(unsigned int id,
                                                             const Change& change) {
  const bool found = changeItem(id, change);
  if (found) updateItemChanged(id);
  return found;
}

bool DownloadManager::DownloadManagerImpl::updatePath(unsigned int id, const std::wstring& path) {
  return changeAndAnnounce(id, [&path](Item& item) { item.setPath(path); });
}

bool DownloadManager::DownloadManagerImpl::updateSize(unsigned int id, unsigned long long size) {
  return changeAndAnnounce(id, [size](Item& item) { item.setSize(size); });
}

bool DownloadManager::DownloadManagerImpl::updateSlotAssignment(unsigned int id, int slot) {
  return changeAndAnnounce(id, [slot](Item& item) { item.setSlotNumber(slot); });
}

bool DownloadManager::DownloadManagerImpl::setTicketAlreadyTorn(unsigned int id) {
  return changeAndAnnounce(id, [](Item& item) { item.setTicketAlreadyTorn(true); });
}

bool DownloadManager::DownloadManagerImpl::setPlayable(unsigned int id, bool playable) {
  return changeAndAnnounce(
      id, [playable](Item& item) { item.setReadyForProgressivePlayback(playable); });
}

bool DownloadManager::DownloadManagerImpl::setDownloadUrl(unsigned int id,
                                                          const std::wstring& url) {
  return changeItem(id, [&url](Item& item) { item.setUrl(url); });
}

bool DownloadManager::DownloadManagerImpl::setTicketId(unsigned int id, long ticketId) {
  return changeItem(id, [ticketId](Item& item) { item.setTicketId(ticketId); });
}

bool DownloadManager::DownloadManagerImpl::setDownloadInfo(unsigned int id,
                                                           const KPB::DownloadInfo& info) {
  return changeItem(id, [&info](Item& item) { item.setDownloadInfo(info); });
}

bool DownloadManager::DownloadManagerImpl::updateStatus(unsigned int id,
                                                        DownloadStatusEnumType status) {
  Film film;
  const bool found = changeItem(id, [&](Item& item) {
    item.setStatus(status);
    film = filmOf(item);
  });
  events_.raise();
  if (found) updateItemChanged(id);
  if (found && plugin::isAtBottom(status)) {
    moveVideoToBottom(id);
    updateListChanged();
  }
  if (found && status == DownloadStatusCompleted) {
    // As it is by now; an item that the view has removed meanwhile was complete all the same.
    changeItem(id, [&film](const Item& item) { film = filmOf(item); });
    tellPlayerOfFinished(film.path, film.uid);
  }
  // The view wants to be asked; what it answers changes nothing here.
  view_.notify([](View& view) { view.keepsRunningWhenFinished(); });
  return found;
}

bool DownloadManager::DownloadManagerImpl::updateDownloadProgress(unsigned int id, int percent) {
  const std::optional<PendingReport> pending = beginProgress(id, percent);
  if (!pending) return false;
  const auto bytes = plugin::bytesToConfirm(pending->progress);
  if (bytes) confirmDownload(pending->progress.ticketId, *bytes);
  endProgress(id, *pending);
  updateItemChanged(id);
  return true;
}

/// What was reported last counts as the previous percent, recorded or not: nothing is confirmed
/// twice.
std::optional<DownloadManager::DownloadManagerImpl::PendingReport>
DownloadManager::DownloadManagerImpl::beginProgress(unsigned int id, int percent) {
  const kvpm::CritLock lock(queueLock_);
  const Item* const item = queue_.find(id);
  if (item == nullptr) return std::nullopt;
  const int previous = progressReports_.newest(id).value_or(item->getPercentDownloaded());
  return PendingReport{progressReports_.begin(id, percent),
                       {item->getTicketId(), item->getSize(), previous, percent}};
}

/// Records the progress, unless its item has gone or a later report was faster.
void DownloadManager::DownloadManagerImpl::endProgress(unsigned int id,
                                                       const PendingReport& pending) {
  const kvpm::CritLock lock(queueLock_);
  const bool isDue = progressReports_.end(pending.number);
  Item* const item = queue_.find(id);
  if (isDue && item != nullptr) recordProgress(*item, pending.progress.percent);
}

/// Waits for the services, unless somebody waits for the transfer to stop meanwhile.
void DownloadManager::DownloadManagerImpl::confirmDownload(long ticketId,
                                                           unsigned long long bytes) {
  confirmations_.confirm(ticketId, bytes, [this] { return !closing_ && stops_ == 0; });
}

void DownloadManager::DownloadManagerImpl::tellServices(long ticketId, unsigned long long bytes) {
  if (const auto services = services_.find()) services->get()->confirmDownload(ticketId, bytes);
}

void DownloadManager::DownloadManagerImpl::setStatusForHost(Item& item,
                                                            DownloadStatusEnumType status) {
  const bool revived = item.getStatus() == DownloadStatusFailed && status != DownloadStatusFailed;
  if (revived && item.getId() == run_.id) run_.superseded = true;
  item.setStatus(status);
}

bool DownloadManager::DownloadManagerImpl::requeueForHost(unsigned int id) {
  const kvpm::CritLock lock(queueLock_);
  Item* const item = queue_.find(id);
  if (item == nullptr) return false;
  setStatusForHost(*item, DownloadStatusQueued);
  return true;
}

std::optional<DownloadStatusEnumType> DownloadManager::DownloadManagerImpl::statusOf(
    unsigned int id) {
  const kvpm::CritLock lock(queueLock_);
  const Item* const item = queue_.find(id);
  return item == nullptr ? std::nullopt : std::make_optional(item->getStatus());
}
