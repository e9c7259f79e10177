#include "plugin/Playback.h"

#include <QString>

#include "KPIM/Helper.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "VeskPlayerX/PlayerInterface.h"
#include "download/BackgroundThread.h"
#include "plugin/HostEventLoop.h"
#include "plugin/PlaybackRules.h"

namespace plugin {
namespace {

auto loadPlayer(KPIM::Context* context) {
  return KPIM::load<VeskPlayerX::PlayerInterface>(context, VeskPlayerX::DIN_Player);
}

}  // namespace

Playback::Playback(SharedQueue& queue, OperationLock& lock, TransferControl& transfers,
                   Moves& moves, KPIM::Context* context)
    : queue_(queue), lock_(lock), transfers_(transfers), moves_(moves), context_(context) {}

bool Playback::play(unsigned int id) {
  const std::optional<DownloadStatusEnumType> status = start(id);
  if (!status) return false;
  const auto player = loadPlayer(context_);
  if (player == nullptr || !waitUntilFlowing(id)) return false;
  const auto film = location(id, *status == DownloadStatusCompleted);
  if (film) player->get()->openMedia(QString::fromStdWString(*film));
  return film.has_value();
}

bool Playback::resumePlaybackForUrl(const std::wstring& url) {
  const std::optional<ItemState> item =
      queue_.use([&url](const DownloadQueue& queue) { return stateOf(queue.findUrl(url)); });
  return item && play(item->id);
}

/// Sees to it that the item is flowing, or about to, unless it is complete. Returns the status to
/// go by; nullopt when there is not enough of the film yet.
std::optional<DownloadStatusEnumType> Playback::start(unsigned int id) {
  if (!lock_.enter()) return std::nullopt;
  const OperationGuard guard(lock_);
  const std::optional<ItemState> item = queue_.state(id);
  if (!item) return std::nullopt;
  TransferControl::ResumeAtEnd atEnd(transfers_);
  const DownloadStatusEnumType status =
      needsRestart(item->status) ? restartWith(*item) : item->status;
  if (transfers_.isPausedByUser()) atEnd.resume();
  return isPlayable(status, item->percent) ? std::make_optional(status) : std::nullopt;
}

/// Pauses and puts the item at the top; the caller resumes. A transfer that completes before it is
/// stopped has done all there is to do.
DownloadStatusEnumType Playback::restartWith(const ItemState& item) {
  transfers_.pause();
  const std::optional<ItemState> stopped = queue_.state(item.id);
  if (stopped && stopped->status == DownloadStatusCompleted) return DownloadStatusCompleted;
  transfers_.setStatus(item.id, DownloadStatusQueued);
  if (item.percent < kPlayablePercent) {
    queue_.change(item.id,
                  [](SharedQueue::Item& queued) { queued.setAutoProgressivePlayback(true); });
  }
  moves_.moveToTop(item.id);
  return DownloadStatusQueued;
}

/// False when the transfer never begins: the item or the manager has gone, or the calling thread is
/// one that the transfer needs.
bool Playback::waitUntilFlowing(unsigned int id) {
  while (!transfers_.isClosing()) {
    const EventCount::Key key = queue_.events().key();
    const std::optional<ItemState> item = queue_.state(id);
    if (!item) return false;
    if (!isAboutToFlow(item->status)) return true;
    if (lock_.isHeldByCaller() || download::BackgroundThread::isCurrent()) return false;
    HostEventLoop::process();
    queue_.events().wait(key, HostEventLoop::longestSleep());
  }
  return false;
}

/// Where the player finds the film; nullopt when the item has gone.
std::optional<std::wstring> Playback::location(unsigned int id, bool isComplete) {
  std::optional<std::wstring> film;
  queue_.change(id, [&](const SharedQueue::Item& item) {
    film = isComplete ? item.getPath() : item.getUrl();
  });
  return film;
}

bool Playback::playRunning(unsigned int id) {
  const std::optional<std::wstring> film = runningLocation(id);
  if (!film || transfers_.isClosing()) return false;
  const auto player = loadPlayer(context_);
  if (player == nullptr) return false;
  player->get()->openMedia(QString::fromStdWString(*film));
  return true;
}

std::optional<std::wstring> Playback::runningLocation(unsigned int id) {
  const std::optional<ItemState> item = transfers_.isRunning(id) ? queue_.state(id) : std::nullopt;
  if (!item || !isWanted(item->status) || !isPlayable(item->status, item->percent)) {
    return std::nullopt;
  }
  return location(id, item->status == DownloadStatusCompleted);
}

}  // namespace plugin
