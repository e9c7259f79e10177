#include "plugin/Progress.h"

#include <QDir>
#include <QString>

#include "VeskPlayerX/InterfaceIds.h"
#include "VeskPlayerX/PlayerInterface.h"
#include "kvpm/TimeTools.h"
#include "plugin/StatusGroups.h"

namespace plugin {
namespace {

using Item = SharedQueue::Item;

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
      estimateTimeRemaining({lastTime, now, item.getPercentDownloaded(), percent});
  if (remaining) item.setTimeRemaining(*remaining);
  item.setLastProgressUpdateTime(static_cast<unsigned long>(now));
  item.setPercentDownloaded(percent);
}

}  // namespace

Progress::Progress(SharedQueue& queue, OperationLock& lock, ServicesLookup& services,
                   KPIM::Context* context)
    : queue_(queue),
      lock_(lock),
      services_(services),
      context_(context),
      confirmations_([this](long ticketId, std::uint64_t bytes) { tellServices(ticketId, bytes); },
                     queue.events()) {}

bool Progress::updatePath(unsigned int id, const std::wstring& path) {
  return queue_.changeAndAnnounce(id, [&path](Item& item) { item.setPath(path); });
}

bool Progress::updateSize(unsigned int id, unsigned long long size) {
  return queue_.changeAndAnnounce(id, [size](Item& item) { item.setSize(size); });
}

bool Progress::updateSlotAssignment(unsigned int id, int slot) {
  return queue_.changeAndAnnounce(id, [slot](Item& item) { item.setSlotNumber(slot); });
}

bool Progress::setTicketAlreadyTorn(unsigned int id) {
  return queue_.changeAndAnnounce(id, [](Item& item) { item.setTicketAlreadyTorn(true); });
}

bool Progress::setPlayable(unsigned int id, bool playable) {
  return queue_.changeAndAnnounce(
      id, [playable](Item& item) { item.setReadyForProgressivePlayback(playable); });
}

bool Progress::setDownloadUrl(unsigned int id, const std::wstring& url) {
  return queue_.change(id, [&url](Item& item) { item.setUrl(url); });
}

bool Progress::setDownloadInfo(unsigned int id, const KPB::DownloadInfo& info) {
  return queue_.change(id, [&info](Item& item) { item.setDownloadInfo(info); });
}

bool Progress::setTicketId(unsigned int id, long ticketId) {
  return queue_.change(id, [ticketId](Item& item) { item.setTicketId(ticketId); });
}

bool Progress::updateStatus(unsigned int id, DownloadStatusEnumType status) {
  Film film;
  const bool found = queue_.change(id, [&](Item& item) {
    item.setStatus(status);
    film = filmOf(item);
  });
  if (found) queue_.announceItem(id);
  const bool sinks = found && isAtBottom(status);
  if (sinks) queue_.use([id](DownloadQueue& queue) { queue.moveToBottom(id); });
  // Not before the item has its place, lest it wake the scheduler: that would climb past a failed
  // one at the head, which queues it anew.
  queue_.events().raise();
  if (sinks) queue_.announceList();
  if (found && status == DownloadStatusCompleted) {
    // As it is by now; an item that the view has removed meanwhile was complete all the same.
    queue_.change(id, [&film](const Item& item) { film = filmOf(item); });
    tellPlayerOfFinished(film.path, film.uid);
  }
  // The view wants to be asked; its answer changes nothing here.
  queue_.view().notify([](SharedQueue::View& view) { view.keepsRunningWhenFinished(); });
  return found;
}

bool Progress::updateDownloadProgress(unsigned int id, int percent) {
  const std::optional<Pending> pending = begin(id, percent);
  if (!pending) return false;
  const auto bytes = bytesToConfirm(pending->progress);
  if (bytes) confirm(pending->progress.ticketId, *bytes);
  end(id, *pending);
  queue_.announceItem(id);
  return true;
}

/// What was reported last counts as the previous percent, recorded or not: nothing is confirmed
/// twice.
std::optional<Progress::Pending> Progress::begin(unsigned int id, int percent) {
  ProgressOfTicket progress;
  progress.percent = percent;
  const kvpm::MutexLock lock(mutex_);
  const bool found = queue_.change(id, [&progress](const Item& item) {
    progress.ticketId = item.getTicketId();
    progress.size = item.getSize();
    progress.previousPercent = item.getPercentDownloaded();
  });
  if (!found) return std::nullopt;
  progress.previousPercent = reports_.newest(id).value_or(progress.previousPercent);
  return Pending{reports_.begin(id, percent), progress};
}

/// Records the progress, unless its item has gone or a later report was recorded first.
void Progress::end(unsigned int id, const Pending& pending) {
  const kvpm::MutexLock lock(mutex_);
  if (!reports_.end(pending.number)) return;
  queue_.change(id, [&pending](Item& item) { recordProgress(item, pending.progress.percent); });
}

/// Waits for the services, unless a stop waits for the transfer that is reported of, or the caller
/// holds the operation lock, which the services may want.
void Progress::confirm(long ticketId, std::uint64_t bytes) {
  confirmations_.confirm(
      ticketId, bytes, [this] { return !lock_.isBackgroundAwaited() && !lock_.isHeldByCaller(); });
}

void Progress::tellServices(long ticketId, std::uint64_t bytes) {
  if (const auto services = services_.find()) services->get()->confirmDownload(ticketId, bytes);
}

void Progress::tellPlayerOfFinished(const std::wstring& path, unsigned long long uid) {
  using Player = VeskPlayerX::PlayerInterface;
  const auto player = KPIM::load<Player>(context_, VeskPlayerX::DIN_Player);
  if (player == nullptr) return;
  player->get()->downloadFinished(QDir::fromNativeSeparators(QString::fromStdWString(path)), uid);
}

}  // namespace plugin
