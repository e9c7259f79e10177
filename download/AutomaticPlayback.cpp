#include "download/AutomaticPlayback.h"

namespace download {

bool AutomaticPlayback::playIfRequested(VeskPlayerX::DownloadItemInterface& item) {
  const Playback play = playback();
  if (!item.getAutoProgressivePlayback() || !play) return false;
  const auto playing = playThread_.ask([play, id = item.getId()] { return play(id); });
  if (!playing.value_or(false)) return false;
  item.setAutoProgressivePlayback(false);
  return true;
}

/// Empty when there is neither a function nor a manager to call.
AutomaticPlayback::Playback AutomaticPlayback::playback() const {
  if (playback_) return playback_;
  auto* const manager = host_.manager();
  if (manager == nullptr) return nullptr;
  return [manager](unsigned int id) { return manager->play(id); };
}

}  // namespace download
