#include "playerx/app/session/QueueWatch.h"

#include <algorithm>
#include <utility>

#include "kvpm/StringTools.h"
#include "playerx/app/model/FilmCheck.h"

namespace playerx::session {

using kvpm::StringTools;
using model::ItemState;
using model::QueueChange;
using Kind = QueueEvent::Kind;

namespace {

bool isReadyToPlay(const ItemState& item) {
  return item.status == DownloadStatusCompleted ||
         (item.status == DownloadStatusDownloading && item.playable);
}

}  // namespace

QueueWatch::QueueWatch(PlayerSession& session, model::QueueTracker::Keep keep,
                       std::function<void()> wake, reasons::Probe probe, Listener listener)
    : session_(session),
      listener_(std::move(listener)),
      explainer_(
          std::move(wake),
          [&session](const std::string& address) { return session.findTransfer(address); },
          std::move(probe)),
      reasons_(session.places().data),
      tracker_(session.reader(), keep, [this](const ItemState& item) { return isArriving(item); }) {
}

QueueWatch::~QueueWatch() {
  if (hasNewReasons_) reasons_.save(queue().kept());
}

bool QueueWatch::isArriving(const ItemState& item) const {
  const std::optional<TransferReport> transfer = session_.findTransfer(item.url);
  // One that is in its place arrives until the module calls it complete, a moment later.
  return transfer && transfer->phase <= TransferPhase::kComplete && !session_.manager().isPaused();
}

std::vector<unsigned int> QueueWatch::update() {
  tellMessages();
  std::vector<unsigned int> added = tellChanges();
  tellReasons();
  saveReasons();
  return added;
}

void QueueWatch::measure() {
  saveReasons();
  const ItemState* const asked = askedItem();
  if (asked == nullptr) asked_ = 0;
  for (const ItemState& item : queue().kept()) {
    const auto progress = &item == asked ? measureSilence(item) : measure(item);
    if (progress) listener_({Kind::kChanged, item, *progress});
  }
}

bool QueueWatch::isIdle() const { return tracker_.unfinished() == 0 && !explainer_.isBusy(); }

void QueueWatch::expectOutcome(unsigned int id) { tracker_.expectOutcome(id); }

void QueueWatch::clearTopFor(unsigned int id) {
  update();
  for (std::size_t place = 0;; ++place) {
    const std::optional<ItemState> item = queue().at(place);
    if (!item || item->id == id || item->status != DownloadStatusFailed) return;
    session_.manager().updateStatus(item->id, DownloadStatusFailed);
  }
}

void QueueWatch::queueAgain(unsigned int id) {
  session_.manager().updateStatus(id, DownloadStatusQueued);
  expectOutcome(id);
}

std::map<unsigned int, model::Progress> QueueWatch::progress() const {
  std::map<unsigned int, model::Progress> progress;
  for (const ItemState& item : queue().kept()) {
    const auto meter = meters_.find(item.id);
    const bool arrives = item.status == DownloadStatusDownloading && meter != meters_.end();
    if (arrives) progress[item.id] = meter->second.progress();
  }
  return progress;
}

void QueueWatch::playWhenReady(unsigned int id) {
  toPlay_.insert(id);
  if (const auto item = queue().find(id)) playIfReady(*item);
}

void QueueWatch::tellMessages() {
  for (const std::string& sentence : session_.takeMessages()) {
    lastWords_ = sentence;
    note(sentence);
  }
}

std::vector<unsigned int> QueueWatch::tellChanges() {
  const model::QueueTracker::News news = tracker_.update();
  for (const ItemState& item : news.removed) tellRemoved(item);
  std::vector<unsigned int> added;
  for (const QueueChange& change : news.changes) {
    if (change.kind == QueueChange::kAdded) added.push_back(change.item.id);
    tell(change);
  }
  // A new order is one event without an item: a single move changes the places of many.
  const bool isOtherwiseKnown = !news.removed.empty() || !added.empty();
  if (news.isRearranged && !isOtherwiseKnown) listener_({Kind::kMoved});
  return added;
}

void QueueWatch::tellRemoved(const ItemState& item) {
  meters_.erase(item.id);
  toPlay_.erase(item.id);
  hasNewReasons_ |= item.status == DownloadStatusFailed;
  listener_({Kind::kRemoved, item});
}

void QueueWatch::tellReasons() {
  const std::vector<reasons::ExplainedFailure> answers = explainer_.takeAnswers();
  if (answers.empty()) return;
  for (const reasons::ExplainedFailure& answer : answers) {
    reasons_.note(answer.item, answer.explanation);
  }
  hasNewReasons_ = true;
  for (const reasons::ExplainedFailure& answer : answers) {
    // Nothing is left of a film that was deleted for its checksum.
    const bool isGone = answer.explanation.reason == reasons::reasonOf(TransferFailure::kChecksum);
    if (isGone) session_.manager().updateDownloadProgress(answer.item.id, 0);
    listener_({Kind::kFailed, answer.item, {}, "", answer.explanation});
  }
}

/// A film that was begun with another media folder is not where its item has it.
void QueueWatch::tellFinished(ItemState item) {
  const std::optional<TransferReport> transfer = session_.findTransfer(item.url);
  const std::string place = transfer ? transfer->finalPath : "";
  if (!place.empty() && place != item.path) {
    item.path = place;
    session_.manager().updatePath(item.id, StringTools::stringToWString(place));
  }
  session_.confirmFilm(item.url);
  listener_({Kind::kFinished, item, {}, findOddity(item, session_.places().media)});
  playIfReady(item);
}

/// A long file is not written for each of many failures: that would take longer than they do.
void QueueWatch::saveReasons() {
  constexpr int kPauses = 9;  // as long as the last save
  const auto now = std::chrono::steady_clock::now();
  if (!hasNewReasons_ || (now < nextSave_ && !isIdle())) return;
  hasNewReasons_ = false;
  reasons_.save(queue().kept());
  const auto end = std::chrono::steady_clock::now();
  nextSave_ = end + kPauses * (end - now);
}

void QueueWatch::tell(const QueueChange& change) {
  const ItemState& item = change.item;
  switch (change.kind) {
    case QueueChange::kAdded:
      return listener_({Kind::kAdded, item});
    case QueueChange::kChanged:
      listener_({Kind::kChanged, item, measure(item).value_or(model::Progress{})});
      return playIfReady(item);
    case QueueChange::kFinished:
      lastWords_.clear();
      return tellFinished(item);
    case QueueChange::kFailed:
      return explainer_.explain(item, session_.view().takeNotices(item.id),
                                std::exchange(lastWords_, {}));
  }
}

/// The item that the manager is preparing: its server is asked for the size, or its services for
/// permission. Null when nothing is being prepared.
const ItemState* QueueWatch::askedItem() const {
  if (!session_.isStarted() || session_.manager().isPaused()) return nullptr;
  const std::vector<ItemState>& kept = queue().kept();
  const auto first = std::find_if(kept.begin(), kept.end(), [](const ItemState& item) {
    return model::isUnfinished(item.status);
  });
  const bool isAsked = first != kept.end() && first->status != DownloadStatusDownloading;
  return isAsked ? &*first : nullptr;
}

/// Nullopt until the silence is worth showing.
std::optional<model::Progress> QueueWatch::measureSilence(const ItemState& item) {
  const auto now = model::ProgressMeter::Clock::now();
  if (std::exchange(asked_, item.id) != item.id) askedSince_ = now;
  const auto silence = std::chrono::floor<std::chrono::seconds>(now - askedSince_);
  if (silence < model::kShortestSilence) return std::nullopt;
  return model::Progress{.silentSeconds = static_cast<std::uint64_t>(silence.count())};
}

/// Nullopt when the item is not being transferred, or how far it has come is not known.
std::optional<model::Progress> QueueWatch::measure(const ItemState& item) {
  if (item.status != DownloadStatusDownloading) return std::nullopt;
  const std::optional<TransferReport> transfer = session_.findTransfer(item.url);
  // Until its partial is open, what an earlier run has left of it is not counted.
  if (!transfer || transfer->partialPath.empty()) return std::nullopt;
  model::ProgressMeter& meter = meters_[item.id];
  meter.feed(model::ProgressMeter::Clock::now(), transfer->arrived, transfer->total);
  model::Progress progress = meter.progress();
  progress.partialPath = transfer->partialPath;
  progress.isRetrying = transfer->phase == TransferPhase::kWaiting && transfer->failedAttempts > 0;
  return progress;
}

void QueueWatch::playIfReady(const ItemState& item) {
  if (!isReadyToPlay(item) || toPlay_.erase(item.id) == 0) return;
  if (session_.manager().play(item.id)) return;
  note("No player could be started for " + item.title + ".");
}

void QueueWatch::note(const std::string& sentence) { listener_({Kind::kNote, {}, {}, sentence}); }

}  // namespace playerx::session
