#pragma once

#include "playerx/window/model/QueueUpdate.h"

namespace playerx::window {

/// A film of this number, waiting.
inline Film film(FilmId id, FilmState state = FilmState::kWaiting) {
  Film film;
  film.id = id;
  film.title = QStringLiteral("Film %1").arg(id);
  film.provider = QStringLiteral("films.example");
  film.address = QStringLiteral("https://films.example/%1.avi").arg(id);
  film.state = state;
  film.size = 700'000'000;
  if (state == FilmState::kDone) film.path = QStringLiteral("/films/%1.avi").arg(id);
  return film;
}

inline Film arriving(FilmId id, int percent) {
  Film arriving = film(id, FilmState::kDownloading);
  arriving.percent = percent;
  arriving.arrived = arriving.size / 100 * static_cast<quint64>(percent);
  arriving.bytesPerSecond = 5'200'000;
  arriving.secondsLeft = 78;
  arriving.isPlayable = percent >= 5;
  return arriving;
}

inline Film failed(FilmId id, const QString& code, const QString& sentence) {
  Film failed = film(id, FilmState::kFailed);
  failed.failure = {code, sentence};
  return failed;
}

/// An update that makes these films the whole queue.
inline QueueUpdate queueOf(const QList<Film>& films) {
  QueueUpdate update;
  update.films = films;
  update.order.emplace();
  for (const Film& each : films) update.order->append(each.id);
  return update;
}

/// An update that brings films into this order.
inline QueueUpdate orderOf(const QList<FilmId>& ids) {
  QueueUpdate update;
  update.order = ids;
  return update;
}

}  // namespace playerx::window
