#pragma once

#include <string>

namespace KPB {

class DownloadCallback;
class DownloadInfo;

/// Id under which the download library offers `DownloadInterface`.
inline constexpr char DIN_Download[] = "com.vesk.playback.interface.Download";

/// The host's download library: fetches files in sessions of its own.
///
/// All operations may be called from any thread, `startSession` and `stopSession` also from within
/// a report. The order of the virtual operations is part of the interface.
class DownloadInterface {
 public:
  DownloadInterface() = default;
  DownloadInterface(const DownloadInterface&) = delete;
  DownloadInterface& operator=(const DownloadInterface&) = delete;
  virtual ~DownloadInterface() = default;

  /// Registers the receiver of all reports, not owned. Null unregisters and returns only when no
  /// report is running on another thread.
  virtual void setCallback(DownloadCallback* callback) = 0;

  /// Starts fetching `urlUtf8` as `info` says, or goes on with what an earlier session of the same
  /// address left. Returns 1 and stores the session's id, never 0, in `*uid` on success; any other
  /// answer means that no session was started. Does not wait for the network; reports may arrive
  /// before it returns.
  virtual int startSession(const std::string& urlUtf8, const DownloadInfo& info,
                           unsigned long long* uid) = 0;

  /// Ends the session and keeps what has arrived; releases a finished one. Returns at once and
  /// never waits for a report. An id that is not known is ignored.
  virtual void stopSession(unsigned long long uid) = 0;
};

}  // namespace KPB
