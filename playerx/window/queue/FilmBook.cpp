#include "playerx/window/queue/FilmBook.h"

#include <QDateTime>
#include <QSet>
#include <algorithm>
#include <utility>

#include "playerx/window/model/Sentences.h"

namespace playerx::window {

namespace {

FilmState stateOf(DownloadStatusEnumType status) {
  switch (status) {
    case DownloadStatusPaused:
      return FilmState::kPaused;
    case DownloadStatusQueued:
      return FilmState::kWaiting;
    case DownloadStatusStarting:
      return FilmState::kConnecting;
    case DownloadStatusDownloading:
      return FilmState::kDownloading;
    case DownloadStatusCompleted:
      return FilmState::kDone;
    case DownloadStatusStopped:
      return FilmState::kStopped;
    case DownloadStatusFailed:
      return FilmState::kFailed;
    case DownloadStatusHeld:
      return FilmState::kHeld;
  }
  return FilmState::kWaiting;
}

/// From here on a film that is arriving can be watched.
constexpr int kWatchablePercent = 5;

FilmFailure failureOf(const reasons::Explanation& reason) {
  return {QString::fromStdString(reason.code()), reasonSentence(reason)};
}

bool canBeWatched(const Film& film) {
  return film.size > 0 && film.arrived * 100 >= film.size * kWatchablePercent &&
         !film.partialPath.isEmpty();
}

void addProgress(Film& film, const model::Progress& progress) {
  film.partialPath = QString::fromStdString(progress.partialPath);
  film.bytesPerSecond = progress.bytesPerSecond;
  film.secondsLeft = progress.secondsLeft;
  if (progress.arrived) film.arrived = *progress.arrived;
  if (film.size > 0) film.arrived = std::min(film.arrived, film.size);
  film.isPlayable = canBeWatched(film);
}

}  // namespace

FilmId FilmBook::filmOf(const session::QueueEvent& event) const {
  return event.item.id == 0 ? 0 : firstId_ + event.item.id;
}

void FilmBook::note(const session::QueueEvent& event) {
  using Kind = session::QueueEvent::Kind;
  if (event.kind != Kind::kChanged && event.kind != Kind::kFailed) return;
  Page& page = pages_[firstId_ + event.item.id];
  if (event.kind == Kind::kChanged) page.progress = event.progress;
  if (event.kind == Kind::kFailed) page.failure = failureOf(event.reason);
  page.isOld = true;
}

std::optional<QueueUpdate> FilmBook::update(const std::vector<model::ItemState>& queue,
                                            bool isPaused) {
  QueueUpdate update;
  update.isPaused = isPaused;
  QList<FilmId> order;
  order.reserve(static_cast<qsizetype>(queue.size()));
  for (const model::ItemState& item : queue) {
    order.append(firstId_ + item.id);
    lastId_ = std::max(lastId_, order.last());
    Page& page = pages_[order.last()];
    if (!page.isOld && page.item == item) continue;
    Film film = filmOf(item, page);
    page.item = item;
    page.isOld = false;
    if (film == page.film) continue;
    page.film = film;
    update.films.append(std::move(film));
  }
  if (pages_.size() != order.size()) forgetOthers(order);
  if (order != order_) update.order = order;
  order_ = std::move(order);
  const bool isNews = update.order || !update.films.isEmpty() || isPaused != isPaused_;
  isPaused_ = isPaused;
  return isNews ? std::optional(update) : std::nullopt;
}

void FilmBook::forgetOthers(const QList<FilmId>& order) {
  const QSet<FilmId> present(order.begin(), order.end());
  pages_.removeIf([&present](const auto& page) { return !present.contains(page.key()); });
}

Film FilmBook::filmOf(const model::ItemState& item, Page& page) const {
  Film film;
  film.id = firstId_ + item.id;
  film.title = QString::fromStdString(item.title);
  film.provider = QString::fromStdString(item.provider);
  film.address = QString::fromStdString(item.url);
  film.path = QString::fromStdString(item.path);
  film.state = stateOf(item.status);
  film.percent = item.percent;
  film.size = item.size;
  film.arrived = item.size / 100 * static_cast<quint64>(item.percent);
  film.finishedAt = page.film.finishedAt;
  const bool isKnown = page.film.id != 0;
  if (film.state == FilmState::kDone && isKnown && page.film.state != FilmState::kDone) {
    film.finishedAt = QDateTime::currentDateTime();
  }
  if (film.state != FilmState::kFailed) {
    page.failure = {};
  } else if (page.failure == FilmFailure() && !isKnown) {
    if (const auto reason = findReason_(item)) page.failure = failureOf(*reason);
  }
  film.failure = page.failure;
  if (isRunning(film.state)) addProgress(film, page.progress);
  return film;
}

}  // namespace playerx::window
