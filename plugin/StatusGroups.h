#pragma once

#include "VeskPlayerX/DownloadStatus.h"

namespace plugin {

/// Which states count as what. Pure functions of the state.

/// The scheduler's next download is the first item in one of these states.
constexpr bool isCandidate(DownloadStatusEnumType status) {
  return status == DownloadStatusPaused || status == DownloadStatusQueued ||
         status == DownloadStatusStarting || status == DownloadStatusDownloading ||
         status == DownloadStatusHeld;
}

/// A transfer may be running.
constexpr bool isActive(DownloadStatusEnumType status) {
  return status == DownloadStatusStarting || status == DownloadStatusDownloading ||
         status == DownloadStatusHeld;
}

/// Queued again when the queue resumes.
constexpr bool isResumable(DownloadStatusEnumType status) {
  return status == DownloadStatusPaused || status == DownloadStatusStarting ||
         status == DownloadStatusDownloading;
}

/// Parked when the queue pauses.
constexpr bool isParkable(DownloadStatusEnumType status) {
  return isResumable(status) || status == DownloadStatusHeld;
}

/// What the worker's copy of an item becomes when its run has ended so: a stopped one waits again.
constexpr DownloadStatusEnumType afterRun(DownloadStatusEnumType result) {
  return result == DownloadStatusStopped ? DownloadStatusQueued : result;
}

/// Kept below all other items.
constexpr bool isAtBottom(DownloadStatusEnumType status) {
  return status == DownloadStatusCompleted || status == DownloadStatusFailed;
}

}  // namespace plugin
