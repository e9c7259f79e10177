#pragma once

#include <mpv/client.h>

#include "playerx/window/playback/FilmPlayer.h"

namespace playerx::window {

/// Fills the state's tracks from libmpv's property "track-list".
void addTracks(const mpv_node& list, PlaybackState& state);

}  // namespace playerx::window
