#include "playerx/app/session/QueueService.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "KPX/OSUtilities.h"
#include "VeskPlayerX/DownloadManagerInterface.h"
#include "playerx/app/model/TextFormat.h"
#include "playerx/app/session/KnownFilm.h"
#include "playerx/transfers/FileNames.h"

namespace playerx::session {

using model::ItemState;
using Action = Request::Action;
using Direction = Request::Direction;
using Outcome = Reply::Outcome;

namespace {

std::filesystem::path partialFolder() {
  return VeskPlayerX::OSUtilities::getTempPath().toStdString();
}

Reply done(std::string result) {
  Reply reply;
  reply.results.push_back(std::move(result));
  return reply;
}

Reply failed(std::string why) { return {Outcome::kFailed, {std::move(why)}}; }

std::optional<ItemState> find(const model::QueueTracker& queue, const Request& request) {
  return request.id ? queue.find(*request.id)
                    : queue.at(static_cast<std::size_t>(request.position) - 1);
}

/// Deletes the film of a removed item, with the record of its rights beside it.
Reply removeFilm(const std::string& film, const std::string& removed) {
  if (film.empty()) return done(removed + "; it had no film.");
  std::error_code error;
  std::filesystem::remove(film + transfers::kRightsSuffix, error);
  if (std::filesystem::remove(film, error)) return done(removed + "; " + film + " was deleted.");
  return failed(removed + "; its film " + film + " could not be deleted (" + error.message() +
                ").");
}

Reply refuseUnknown(const Request& request, std::size_t length) {
  return {Outcome::kWrongUse,
          {request.id ? "The item is not in the queue any more."
                      : "There is no item " + std::to_string(request.position) +
                            "; the queue holds " + std::to_string(length) + "."}};
}

bool isComplete(const ItemState& item) { return item.status == DownloadStatusCompleted; }

std::size_t countPaused(const model::QueueTracker& queue) {
  const std::vector<ItemState>& kept = queue.kept();
  return static_cast<std::size_t>(
      std::count_if(kept.begin(), kept.end(), [](const ItemState& item) {
        return item.status == DownloadStatusPaused || item.status == DownloadStatusStopped;
      }));
}

/// The limit itself is set with every request that has one.
Reply limited(const PlayerSession& session, const Request& request) {
  if (!session.isStarted()) return failed(kLimitsNothing);
  const std::uint64_t rate = request.rateLimit.value_or(0);
  if (rate == 0) return done("The rate is no longer limited.");
  return done("At most " + std::to_string(rate) + " bytes (" + model::formatBytes(rate) +
              ") per second from now on.");
}

/// From 1 on; 0 when the item is not in the queue.
std::ptrdiff_t placeOf(const model::QueueTracker& queue, unsigned int id) {
  const auto place = queue.placeOf(id);
  return place ? static_cast<std::ptrdiff_t>(*place) + 1 : 0;
}

/// The end of a sentence on what waits again.
std::string whatNext(PlayerSession& session, std::size_t items) {
  if (!session.isStarted()) return items == 1 ? "; `get` downloads it." : "; `get` downloads them.";
  return session.manager().isPaused() ? "; the queue is paused." : ".";
}

}  // namespace

QueueService::QueueService(PlayerSession& session, model::QueueTracker::Keep keep,
                           std::function<void()> wake, reasons::Probe probe,
                           QueueWatch::Listener listener)
    : session_(session),
      stopped_(session),
      watch_(session, keep, std::move(wake), std::move(probe),
             [this, listener = std::move(listener)](const QueueEvent& event) {
               if (!stopped_.isBeforeStop(event)) listener(event);
             }),
      adder_(session, watch_, [this](unsigned int id) { stopped_.letGo(id); }) {
  stopped_.adopt(watch_.queue().kept());
}

Reply QueueService::handle(const Request& request) {
  if (request.action == Action::kPing) return {};
  if (request.rateLimit) session_.setRateLimit(*request.rateLimit);
  if (request.action == Action::kAdd) return adder_.add(request);
  watch_.update();
  if (!request.id && request.position == 0) return editAll(request);
  const std::optional<ItemState> item = find(watch_.queue(), request);
  Reply reply = item ? editItem(request, *item) : refuseUnknown(request, watch_.queue().size());
  update();
  return reply;
}

void QueueService::update() {
  watch_.update();
  stopped_.stopAgain(watch_.queue().kept());
  if (mayHaveLeftovers_) deleteLeftovers();
}

model::QueueProgress QueueService::progress() const {
  return watch_.queue().progress(session_.manager().isPaused());
}

void QueueService::deleteLeftovers() {
  mayHaveLeftovers_ = false;
  session_.pruneFilmOptions();
  if (session_.hasQueueSetAside()) return;
  for (const Leftover& leftover : leftovers()) {
    if (!deleteLeftover(partialFolder(), leftover)) mayHaveLeftovers_ = true;
  }
}

/// As a rule the films that are not complete account for all that lies there.
std::vector<Leftover> QueueService::leftovers() const {
  std::vector<Leftover> leftovers = findLeftovers(partialFolder(), watch_.queue().kept());
  return leftovers.empty() ? leftovers : findLeftovers(partialFolder(), watch_.queue().all());
}

/// Deletes leftovers that the user asks about even while a queue lies set aside.
Reply QueueService::clean(bool dryRun) {
  Reply reply;
  for (const Leftover& leftover : leftovers()) {
    const std::string name = leftover.address.empty() ? leftover.key : leftover.address;
    const bool isGone = !dryRun && deleteLeftover(partialFolder(), leftover);
    if (!dryRun && !isGone) continue;
    reply.results.push_back(
        (dryRun ? "Would delete what is left of " : "Deleted what was left of ") + name + " (" +
        model::formatBytes(leftover.bytes) + ").");
  }
  return reply.results.empty() ? done("Nothing is left over.") : reply;
}

Reply QueueService::list() {
  Reply reply;
  reply.items = watch_.queue().all();
  reply.progress = watch_.progress();
  reply.isPaused = session_.manager().isPaused();
  return reply;
}

Reply QueueService::editAll(const Request& request) {
  switch (request.action) {
    case Action::kPause:
      return pauseAll();
    case Action::kResume:
      return resumeAll();
    case Action::kRetry:
      return retryAll();
    case Action::kClear:
      return clear();
    case Action::kClean:
      return clean(request.dryRun);
    case Action::kLimit:
      return limited(session_, request);
    case Action::kShow:
      return failed("The player that has the queue has no window.");
    case Action::kRemove:
    case Action::kMove:
      return refuseUnknown(request, watch_.queue().size());
    default:
      return list();
  }
}

Reply QueueService::pauseAll() {
  if (watch_.isIdle()) return done("Nothing is waiting to be downloaded.");
  if (!session_.isStarted()) {
    return failed("Nothing is being downloaded; `pause N` keeps an item waiting.");
  }
  session_.pause();
  update();
  return done("The queue is paused; `resume` lets it go on.");
}

Reply QueueService::clear() {
  const std::size_t completed = watch_.queue().progress(false).completed;
  session_.manager().clearCompletedDownloads();
  mayHaveLeftovers_ = true;
  update();
  if (completed == 0) return done("No item is complete.");
  return done("Removed " + model::formatCount(completed, "completed item") + ".");
}

Reply QueueService::editItem(const Request& request, const ItemState& item) {
  switch (request.action) {
    case Action::kRemove:
      return remove(item, request.withFilm);
    case Action::kRetry:
      return retry(item);
    case Action::kMove:
      if (item.status == DownloadStatusFailed) {
        return failed("A failed item cannot be moved before it is tried again.");
      }
      return request.direction == Direction::kBefore ? moveBefore(item, request.before)
                                                     : move(item, request.direction);
    case Action::kPause:
      return pause(item);
    case Action::kResume:
      return resume(item);
    default:
      return list();
  }
}

Reply QueueService::remove(const ItemState& item, bool withFilm) {
  bool isRemoved = false;
  whileStopped(session_, watch_.queue().kept(), item,
               [&] { isRemoved = session_.manager().remove(item.id); });
  if (!isRemoved) return failed("The item could not be removed.");
  mayHaveLeftovers_ = true;
  const std::string removed = "Removed: " + displayName(item);
  if (!withFilm) return done(removed + ".");
  // The place of any other item may be that of a film that was there before.
  const std::string film = isComplete(item) ? findFilm(item, session_.places().media) : "";
  return removeFilm(film, removed);
}

Reply QueueService::retry(const ItemState& item) {
  if (item.status != DownloadStatusFailed) {
    return failed("Only a failed item can be retried; this one is " +
                  std::string(model::statusWord(item.status)) + ".");
  }
  watch_.clearTopFor(item.id);
  if (session_.manager().isPaused()) {
    // The manager's own retry ends the pause.
    watch_.queueAgain(item.id);
    session_.manager().moveToTop(item.id);
  } else {
    session_.manager().retry(item.id);
    watch_.expectOutcome(item.id);
  }
  return done("Queued again: " + displayName(item) + whatNext(session_, 1));
}

Reply QueueService::retryAll() {
  std::vector<ItemState> queue = watch_.queue().kept();
  std::erase_if(queue, [](const ItemState& item) { return item.status != DownloadStatusFailed; });
  for (const ItemState& item : queue) watch_.queueAgain(item.id);
  watch_.update();
  if (queue.empty()) return done("No item has failed.");
  return done("Queued again: " + model::formatCount(queue.size(), "item") +
              whatNext(session_, queue.size()));
}

Reply QueueService::move(const ItemState& item, Direction direction) {
  VeskPlayerX::DownloadManagerInterface& manager = session_.manager();
  const std::ptrdiff_t before = placeOf(watch_.queue(), item.id);
  bool isMoved = true;
  switch (direction) {
    case Direction::kUp:
      isMoved = manager.moveUp(item.id);
      break;
    case Direction::kDown:
      isMoved = manager.moveDown(item.id);
      break;
    case Direction::kTop:
      manager.moveToTop(item.id);
      break;
    case Direction::kBottom:
      manager.moveToBottom(item.id);
      break;
    case Direction::kBefore:
      break;
  }
  watch_.update();
  // Waiting items stay above those that failed or are complete.
  const bool isHeldUp = direction == Direction::kBottom &&
                        placeOf(watch_.queue(), item.id) == before &&
                        before < static_cast<std::ptrdiff_t>(watch_.queue().size());
  return isMoved && !isHeldUp ? tellPlace(item) : failed("The item cannot move any further.");
}

Reply QueueService::tellPlace(const ItemState& item) {
  watch_.update();
  const std::size_t length = watch_.queue().size();
  const std::ptrdiff_t place = placeOf(watch_.queue(), item.id);
  if (place == 0) return refuseUnknown({.id = item.id}, length);
  return done(displayName(item) + " is now item " + std::to_string(place) + " of " +
              std::to_string(length) + ".");
}

/// One step at a time, because the manager knows no other way to a place in between.
Reply QueueService::moveBefore(const ItemState& item, unsigned int before) {
  VeskPlayerX::DownloadManagerInterface& manager = session_.manager();
  const std::ptrdiff_t end = placeOf(watch_.queue(), before);
  if (end == 0) return refuseUnknown({.id = before}, watch_.queue().size());
  std::ptrdiff_t steps = end - placeOf(watch_.queue(), item.id);
  bool isMoved = true;
  for (; steps < 0 && isMoved; ++steps) isMoved = manager.moveUp(item.id);
  for (; steps > 1 && isMoved; --steps) isMoved = manager.moveDown(item.id);
  return isMoved ? tellPlace(item) : failed("The item cannot move that far.");
}

Reply QueueService::pause(const ItemState& item) {
  if (!model::isUnfinished(item.status)) {
    return failed("Only what waits or arrives can be paused; this one is " +
                  std::string(model::statusWord(item.status)) + ".");
  }
  const bool isPassed = item.status == DownloadStatusDownloading && watch_.queue().unfinished() > 1;
  stopped_.stop(item, watch_.queue().kept());
  return done("Paused: " + displayName(item) + (isPassed ? "; the next film goes first." : "."));
}

Reply QueueService::resume(const ItemState& item) {
  if (item.status == DownloadStatusPaused) return resumeAll();
  if (item.status != DownloadStatusStopped && !session_.view().isKeptStopped(item.id)) {
    return failed("Only a paused item can be resumed; this one is " +
                  std::string(model::statusWord(item.status)) + ".");
  }
  stopped_.letGo(item.id);
  return done("Resumed: " + displayName(item) + whatNext(session_, 1));
}

Reply QueueService::resumeAll() {
  const std::size_t paused = countPaused(watch_.queue());
  const bool hasEffect = paused > 0 || session_.manager().isPaused();
  stopped_.letAllGo(watch_.queue().kept());
  if (hasEffect) session_.manager().resume();
  update();
  if (!hasEffect) return done("Nothing is paused.");
  if (session_.isStarted()) return done("The queue goes on.");
  return done("Resumed " + model::formatCount(paused, "item") + whatNext(session_, paused));
}

}  // namespace playerx::session
