#include "playerx/window/queue/FilmBook.h"

#include <QDateTime>
#include <algorithm>
#include <utility>

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

}  // namespace

FilmBook::FilmBook(FindTransfer findTransfer) : findTransfer_(std::move(findTransfer)) {}

std::optional<QueueUpdate> FilmBook::update(const std::vector<model::ItemState>& queue,
                                            bool isPaused, Clock::time_point now) {
  QueueUpdate update;
  update.isPaused = isPaused;
  QList<FilmId> order;
  order.reserve(static_cast<qsizetype>(queue.size()));
  QHash<FilmId, Page> pages;
  pages.reserve(static_cast<qsizetype>(queue.size()));
  for (const model::ItemState& item : queue) {
    Page page = pages_.take(item.id);
    const bool isNew = page.film.id == 0;
    Film film = filmOf(item, page, now);
    if (isNew || film != page.film) {
      page.film = film;
      update.films.append(std::move(film));
    }
    order.append(item.id);
    pages.insert(item.id, std::move(page));
  }
  pages_ = std::move(pages);
  if (order != order_) update.order = order;
  order_ = std::move(order);
  const bool isNews = update.order || !update.films.isEmpty() || isPaused != isPaused_;
  isPaused_ = isPaused;
  return isNews ? std::optional(update) : std::nullopt;
}

void FilmBook::explain(FilmId id, const reasons::Explanation& explanation) {
  const auto page = pages_.find(id);
  if (page == pages_.end()) return;
  page->failure = {QString::fromStdString(explanation.code()),
                   QString::fromStdString(explanation.happened) + QLatin1Char('.')};
}

Film FilmBook::filmOf(const model::ItemState& item, Page& page, Clock::time_point now) {
  Film film;
  film.id = item.id;
  film.title = QString::fromStdString(item.title);
  film.provider = QString::fromStdString(item.provider);
  film.address = QString::fromStdString(item.url);
  film.path = QString::fromStdString(item.path);
  film.state = stateOf(item.status);
  film.percent = item.percent;
  film.size = item.size;
  film.arrived = item.size / 100 * static_cast<quint64>(item.percent);
  if (film.state == FilmState::kFailed) film.failure = page.failure;
  if (film.state != FilmState::kFailed) page.failure = {};
  film.finishedAt = page.film.finishedAt;
  const bool isKnown = page.film.id != 0;
  if (film.state == FilmState::kDone && isKnown && page.film.state != FilmState::kDone) {
    film.finishedAt = QDateTime::currentDateTime();
  }
  if (isRunning(film.state)) measure(item, film, page, now);
  return film;
}

void FilmBook::measure(const model::ItemState& item, Film& film, Page& page,
                       Clock::time_point now) {
  const std::optional<TransferReport> transfer = findTransfer_(item.url);
  if (!transfer) return;
  if (film.size == 0) film.size = transfer->total;
  film.partialPath = QString::fromStdString(transfer->partialPath);
  film.arrived = std::max<quint64>(transfer->arrived, film.size > 0 ? 0 : film.arrived);
  page.speed.feed(now, transfer->arrived);
  film.bytesPerSecond = page.speed.bytesPerSecond();
  if (film.size == 0) return;
  film.arrived = std::min(film.arrived, film.size);
  film.isPlayable =
      film.arrived * 100 >= film.size * kWatchablePercent && !film.partialPath.isEmpty();
  film.secondsLeft = page.timeLeft.of(film.size - film.arrived, film.bytesPerSecond, now);
}

}  // namespace playerx::window
