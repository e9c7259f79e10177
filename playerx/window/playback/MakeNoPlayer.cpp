#include "playerx/window/playback/FilmPlayer.h"

namespace playerx::window {

FilmPlayer* makeFilmPlayer(QObject*) { return nullptr; }

}  // namespace playerx::window
