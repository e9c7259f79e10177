#include "playerx/window/model/FilmNews.h"

#include "playerx/window/model/FilmModel.h"

namespace playerx::window {

namespace {

constexpr int kQuarter = 25;

}  // namespace

FilmNews::FilmNews(const FilmModel& films, QObject* parent) : QObject(parent), films_(films) {
  connect(&films_, &FilmModel::rowsInserted, this,
          [this](const QModelIndex&, int first, int last) { onInserted(first, last); });
  connect(&films_, &FilmModel::dataChanged, this,
          [this](const QModelIndex& first, const QModelIndex& last) {
            onChanged(first.row(), last.row());
          });
  connect(&films_, &FilmModel::rowsAboutToBeRemoved, this,
          [this](const QModelIndex&, int first, int last) {
            for (int row = first; row <= last; ++row) seen_.remove(films_.filmAt(row)->id);
          });
}

FilmNews::Seen FilmNews::seen(const Film& film) {
  return {film.state, film.percent / kQuarter, canBePlayed(film), !film.failure.sentence.isEmpty()};
}

void FilmNews::onInserted(int first, int last) {
  for (int row = first; row <= last; ++row) {
    const Film& film = *films_.filmAt(row);
    seen_.insert(film.id, seen(film));
  }
}

void FilmNews::onChanged(int first, int last) {
  for (int row = first; row <= last; ++row) {
    const Film film = *films_.filmAt(row);
    const Seen now = seen(film);
    const Seen before = std::exchange(seen_[film.id], now);
    compare(film, before, now);
  }
}

void FilmNews::compare(const Film& film, const Seen& before, const Seen& now) {
  const bool isNewState = now.state != before.state;
  if (isNewState && now.state == FilmState::kDone) Q_EMIT done(film);
  if (now.state == FilmState::kFailed && now.isExplained && !before.isExplained)
    Q_EMIT failed(film);
  if (now.isPlayable && !before.isPlayable) Q_EMIT becamePlayable(film);
  const bool isNextQuarter = isRunning(now.state) && now.quarter > before.quarter;
  if (isNewState || isNextQuarter) Q_EMIT advanced(film);
}

}  // namespace playerx::window
