#include "playerx/window/actions/PendingRemoval.h"

#include <utility>

#include "playerx/window/queue/QueueClient.h"

namespace playerx::window {

namespace {

/// Time for the queue to drop films; those it has kept come into sight again.
constexpr int kLeavingMs = 3000;

}  // namespace

PendingRemoval::PendingRemoval(QueueClient& client, QObject* parent)
    : QObject(parent), client_(client) {
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
  if (!stopped_.isEmpty()) client_.stop(stopped_);
  timer_.start();
  announce();
}

void PendingRemoval::undo() {
  timer_.stop();
  films_.clear();
  const QList<FilmId> stopped = std::exchange(stopped_, {});
  if (!stopped.isEmpty()) client_.goOn(stopped);
  announce();
  Q_EMIT settled();
}

void PendingRemoval::commit() {
  timer_.stop();
  if (films_.isEmpty()) return;
  const QList<FilmId> films = std::exchange(films_, {});
  stopped_.clear();
  client_.remove(films, withFiles_);
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
