#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "KPB/DownloadCallback.h"
#include "KPB/DownloadInfo.h"
#include "KPB/DownloadInterface.h"
#include "VeskPlayerX/PlayerInterface.h"
#include "download/Host.h"

namespace download {

/// The download library, and the session in it that is yet to be released.
///
/// A session that broke, or that completed while there was no player, is kept beyond its run: the
/// view and the player are only now told of that end, and may still use what has arrived. Owner:
/// the worker. Used by the thread that holds the run lock, but for `stop` and `unregister`.
class LibrarySession {
 public:
  /// `host` is not owned and outlives this object.
  explicit LibrarySession(Host& host) : host_(host) {}

  /// Has the library report to `callback`; loads the library first, once. Returns false when it
  /// cannot be loaded.
  bool load(KPB::DownloadCallback& callback);

  /// Starts a session in the loaded library. Returns its id, and nullopt when it is refused.
  std::optional<unsigned long long> start(const std::string& url, const KPB::DownloadInfo& info);

  /// Releases the session unless `player`, which may be null, has its film open and will do that.
  void release(VeskPlayerX::PlayerInterface* player);

  /// Releases the session of an earlier run, by the same rule for the player of now.
  void releaseLast();

  /// Leaves the release of the session to another.
  void leave() { uid_ = 0; }

  /// Stops a session, which need not be released after that.
  void end(unsigned long long uid);

  /// Stops a session in the library, if that is loaded, whether that succeeds or throws. Any
  /// thread.
  void stop(unsigned long long uid);

  /// No report comes after this. Waits for one that is running. Any thread.
  void unregister();

 private:
  Host& host_;
  std::unique_ptr<KPIM::Helper<KPB::DownloadInterface>> helper_;
  std::atomic<KPB::DownloadInterface*> library_{nullptr};  // never changes once it is set
  unsigned long long uid_ = 0;                             // 0 without a session to release
};

}  // namespace download
