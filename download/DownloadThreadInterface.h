#pragma once

#include "VeskPlayerX/DownloadItemInterface.h"

namespace VeskPlayerX {
class DownloadManagerInterface;
class DownloadManagerViewInterface;
}  // namespace VeskPlayerX

/// The download worker as its manager sees it: carries one item at a time from start to end.
///
/// The order of the virtual operations is part of the interface.
class DownloadThreadInterface {
 public:
  DownloadThreadInterface() = default;
  DownloadThreadInterface(const DownloadThreadInterface&) = delete;
  DownloadThreadInterface& operator=(const DownloadThreadInterface&) = delete;
  virtual ~DownloadThreadInterface() = default;

  /// The item of the current or last run, owned by the worker; null before the first run. Valid
  /// until the next `downloadVideo`.
  virtual VeskPlayerX::DownloadItemInterface* getItem() = 0;

  /// Downloads `item`, of which the worker takes ownership until the next call. Blocks until the
  /// item has ended; returns `DownloadStatusCompleted`, `DownloadStatusStopped` or
  /// `DownloadStatusFailed` (also for null). Called by one thread at a time, with no lock of the
  /// manager held.
  virtual DownloadStatusEnumType downloadVideo(VeskPlayerX::DownloadItemInterface* item) = 0;

  /// Stops whatever runs; returns once a running `downloadVideo` has returned, at once when
  /// nothing runs. May be called from any thread; from within a report of the download library it
  /// only asks, and the run ends when the report has returned.
  virtual void stop() = 0;

  /// Stores both, neither owned; `view` may be null. May be called during a run.
  virtual void setInterfaces(VeskPlayerX::DownloadManagerInterface* manager,
                             VeskPlayerX::DownloadManagerViewInterface* view) = 0;

  /// Asks for the session `uid` to be stopped. Takes no lock and returns at once.
  virtual void stopDownload(unsigned long long uid) = 0;

  /// Announces the next `downloadVideo`: a `stop` from here on ends that run with
  /// `DownloadStatusStopped`, even one that has come and gone before `downloadVideo` is called. The
  /// scheduler calls it when it has picked an item, as the last thing under its locks; without it a
  /// stop that falls between pick and start would be lost. Never blocks. Does nothing by default.
  virtual void prepare() {}

  /// Stops what runs, unregisters from the library and ends the worker's own threads. Once it
  /// returns, nothing of this worker reaches the manager or the view, and every later
  /// `downloadVideo` of an item answers `DownloadStatusStopped`. Called without a lock that a
  /// report or `play` could ask for; may wait for an answer of the online services up to the
  /// deadlines that these keep, and for the answer to a question of the view.
  /// Does nothing by default.
  virtual void close() {}
};
