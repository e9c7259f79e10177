#include "playerx/window/model/QueueTotals.h"

#include <algorithm>

namespace playerx::window {

QueueTotals QueueTotals::of(const std::vector<Film>& films) {
  QueueTotals totals;
  for (const Film& film : films) {
    ++totals.films;
    const bool isDone = film.state == FilmState::kDone;
    const bool isLeft = isUnfinished(film.state);
    if (isDone) ++totals.done;
    if (isLeft) ++totals.unfinished;
    if (window::isRunning(film.state)) totals.isRunning = true;
    if (isLeft && film.size == 0) totals.isWhole = false;
    if (!isDone && !isLeft) continue;
    totals.size += film.size;
    totals.arrived += isDone ? film.size : std::min(film.size, film.arrived);
    totals.bytesPerSecond += film.bytesPerSecond;
  }
  return totals;
}

}  // namespace playerx::window
