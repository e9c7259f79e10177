#pragma once

#include <functional>
#include <memory>
#include <string>

#include "download/DownloadThreadInterface.h"

namespace KPIM {
class Context;
}

/// The download worker: authorises, measures, places and fetches one item at a time through the
/// host's download library.
///
/// Owned by the manager. `downloadVideo` runs on the scheduler's thread, everything else on any
/// thread. Failures are `DownloadStatusFailed`; nothing throws.
///
/// What it asks of the manager whose interfaces it is given:
/// - The manager's reports (`updateStatus`, `updateDownloadProgress`, `setPlayable`, ...) may be
///   called on the scheduler's thread and on threads of the library. They take no lock that is held
///   around `stop`.
/// - `play`, or the function given to `setPlayback` in its place, is called on a thread of the
///   worker's own, one call at a time, with no lock of the worker held by that thread. It may wait
///   for locks that are held around `stop`, and may itself call `stop`: a stop ends the wait for
///   its answer, and the call then ends in its own time. It must come to an end soon after the
///   manager has begun to shut down, since `close` waits for it.
/// - `setInterfaces` is called with no lock held that a view's operation could ask for.
class HttpDownloadThread : public DownloadThreadInterface {
 public:
  /// `context` finds the library, the services and the player; not owned, outlives the worker.
  /// Creates the host's shared preferences object unless it exists.
  explicit HttpDownloadThread(KPIM::Context* context);

  /// Closes the worker, then deletes the shared preferences object unless another worker uses it.
  ~HttpDownloadThread() override;

  VeskPlayerX::DownloadItemInterface* getItem() override;
  DownloadStatusEnumType downloadVideo(VeskPlayerX::DownloadItemInterface* item) override;
  void stop() override;

  /// Once it returns, no notice is running at the earlier view and none will reach it, except
  /// one that the calling thread itself is inside. A question that waits for the user,
  /// `chooseSlot`, is not waited for: a view that is asked something outlives its own answer.
  void setInterfaces(VeskPlayerX::DownloadManagerInterface* manager,
                     VeskPlayerX::DownloadManagerViewInterface* view) override;

  void stopDownload(unsigned long long uid) override;

  /// Has the film of the present run handed to the player by `playback(id)` instead of the
  /// manager's `play(id)`; true means that it plays. The film is flowing already, so there is
  /// nothing to rearrange or to restart. Called before the first run.
  void setPlayback(std::function<bool(unsigned int id)> playback);

  void prepare() override;
  void close() override;

  /// Bytes of the media behind `url`, learnt with HEAD requests that follow redirects; 0 when they
  /// cannot be learnt. Blocks for the network; a stop of the run ends it early with 0.
  unsigned long long getTotalMediaSize(const std::string& url);

  class HttpDownloadThreadImpl;

 private:
  std::unique_ptr<HttpDownloadThreadImpl> impl_;
};
