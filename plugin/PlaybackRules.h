#pragma once

#include "VeskPlayerX/DownloadStatus.h"

namespace plugin {

/// What `play` decides by. Pure functions of an item's state.

/// With this much of a film there, in percent, the player may begin.
inline constexpr int kPlayablePercent = 5;

/// Whether the queue has to be restarted with the item before it can be played: it is neither
/// flowing nor complete.
constexpr bool needsRestart(DownloadStatusEnumType status) {
  return status != DownloadStatusHeld && status != DownloadStatusDownloading &&
         status != DownloadStatusCompleted;
}

/// Whether there is enough of the film for the player to begin.
constexpr bool isPlayable(DownloadStatusEnumType status, int percent) {
  return status == DownloadStatusCompleted || percent >= kPlayablePercent;
}

/// Whether the transfer of the item is still to begin.
constexpr bool isAboutToFlow(DownloadStatusEnumType status) {
  return status == DownloadStatusQueued || status == DownloadStatusStarting;
}

/// Whether an item whose transfer reports progress is still to be played: it was neither ended nor
/// parked meanwhile. It may be queued or starting, since adding another download queues it anew
/// while its transfer goes on.
constexpr bool isWanted(DownloadStatusEnumType status) {
  return status != DownloadStatusPaused && status != DownloadStatusStopped &&
         status != DownloadStatusFailed;
}

}  // namespace plugin
