#include "playerx/window/actions/PendingRemoval.h"

#include <utility>

#include "playerx/window/queue/WindowQueue.h"

namespace playerx::window {

namespace {

/// Time for the queue to drop films; those it has kept come into sight again.
constexpr int kLeavingMs = 3000;

}  // namespace

PendingRemoval::PendingRemoval(WindowQueue& queue, QObject* parent)
    : QObject(parent), queue_(queue) {
  timer_.setSingleShot(true);
  timer_.setInterval(kUndoMs);
  connect(&timer_, &QTimer::timeout, this, &PendingRemoval::commit);
}

void PendingRemoval::begin(const QList<Film>& films, bool withFiles) {
  commit();
  if (films.isEmpty()) return;
  for (const Film& film : films) {
    films_.append(film.id);
    if (isUnfinished(film.state) && film.state != FilmState::kStopped) stopped_.append(film.id);
  }
  withFiles_ = withFiles;
  if (!stopped_.isEmpty()) queue_.stop(stopped_);
  timer_.start();
  announce();
}

void PendingRemoval::undo() {
  timer_.stop();
  films_.clear();
  const QList<FilmId> stopped = std::exchange(stopped_, {});
  if (!stopped.isEmpty()) queue_.goOn(stopped);
  announce();
  Q_EMIT settled();
}

void PendingRemoval::commit() {
  timer_.stop();
  if (films_.isEmpty()) return;
  const QList<FilmId> films = std::exchange(films_, {});
  stopped_.clear();
  queue_.remove(films, withFiles_);
  for (const FilmId film : films) leaving_.insert(film);
  QTimer::singleShot(kLeavingMs, this, [this, films] {
    for (const FilmId film : films) leaving_.remove(film);
    announce();
  });
  announce();
  Q_EMIT settled();
}

void PendingRemoval::announce() {
  QSet<FilmId> hidden = leaving_;
  for (const FilmId film : films_) hidden.insert(film);
  Q_EMIT hiddenChanged(hidden);
}

}  // namespace playerx::window
