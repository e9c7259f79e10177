#pragma once

#include <functional>
#include <utility>

#include "VeskPlayerX/DownloadItemInterface.h"
#include "download/Host.h"
#include "download/SideThread.h"

namespace download {

/// Hands a film to the player as soon as it flows, if its item asks for that.
///
/// Handing it over may need a lock whose holder is waiting for this very run to stop, so the call
/// is made on a side thread. Owner: the worker. Used by one thread at a time.
class AutomaticPlayback {
 public:
  using Playback = std::function<bool(unsigned int id)>;

  /// Neither is owned; both outlive this object.
  AutomaticPlayback(Host& host, RunState& run) : host_(host), playThread_(run) {}

  /// What plays a film instead of the manager. Called before the first run.
  void setPlayback(Playback playback) { playback_ = std::move(playback); }

  /// True when automatic playback was requested and the film plays now; the item's wish is then
  /// cleared.
  bool playIfRequested(VeskPlayerX::DownloadItemInterface& item);

  /// Whether a film is being handed over.
  bool isBusy() const { return playThread_.isBusy(); }

  /// Waits for the call under way. No run is under way any more.
  void finish() { playThread_.finish(); }

 private:
  Playback playback() const;

  Host& host_;
  Playback playback_;  // empty: the manager plays
  SideThread playThread_;
};

}  // namespace download
