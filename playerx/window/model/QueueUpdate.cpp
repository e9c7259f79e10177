#include "playerx/window/model/QueueUpdate.h"

#include <QHash>

namespace playerx::window {

void QueueUpdate::append(const QueueUpdate& later) {
  QHash<FilmId, qsizetype> known;
  for (qsizetype i = 0; i < films.size(); ++i) known.insert(films[i].id, i);
  for (const Film& film : later.films) {
    const auto earlier = known.constFind(film.id);
    if (earlier == known.constEnd()) {
      films.append(film);
    } else {
      films[*earlier] = film;
    }
  }
  if (later.order) order = later.order;
  isPaused = later.isPaused;
}

}  // namespace playerx::window
