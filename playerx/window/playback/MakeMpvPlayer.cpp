#include "playerx/window/playback/MpvFilmPlayer.h"

namespace playerx::window {

FilmPlayer* makeFilmPlayer(QObject* parent) {
  auto player = std::make_unique<MpvFilmPlayer>(parent);
  return player->isUsable() ? player.release() : nullptr;
}

}  // namespace playerx::window
