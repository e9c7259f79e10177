#include "playerx/window/model/Film.h"

namespace playerx::window {

bool isRunning(FilmState state) {
  return state == FilmState::kConnecting || state == FilmState::kDownloading ||
         state == FilmState::kHeld;
}

bool isUnfinished(FilmState state) {
  return state != FilmState::kDone && state != FilmState::kFailed;
}

bool canBePlayed(const Film& film) {
  return film.state == FilmState::kDone || (film.isPlayable && isUnfinished(film.state));
}

}  // namespace playerx::window
