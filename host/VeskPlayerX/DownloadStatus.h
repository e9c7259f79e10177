#pragma once

#include <cstdint>

/// State of a download. The values are written to the queue file.
enum DownloadStatusEnumType : std::int32_t {
  DownloadStatusPaused = 0,       ///< head of the queue while the user has paused it
  DownloadStatusQueued = 1,       ///< waits its turn
  DownloadStatusStarting = 2,     ///< handed to the worker, no byte yet
  DownloadStatusDownloading = 3,  ///< bytes arrive
  DownloadStatusCompleted = 4,    ///< finished; final
  DownloadStatusStopped = 5,      ///< stopped on request; queued again by the scheduler
  DownloadStatusFailed = 6,       ///< failed; only a retry leaves it
  DownloadStatusHeld = 7,         ///< active, and not to be started by the scheduler
};
