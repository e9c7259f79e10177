#pragma once

#include <string>

namespace KPB {

/// Id of the interface by which a receiver of reports is known.
inline constexpr char DIN_DownloadCallback[] = "com.vesk.playback.interface.DownloadCallback";

/// Receiver of the download library's reports on its sessions.
///
/// Called on threads of the library. The order of the virtual operations is part of the interface.
class DownloadCallback {
 public:
  DownloadCallback() = default;
  DownloadCallback(const DownloadCallback&) = delete;
  DownloadCallback& operator=(const DownloadCallback&) = delete;
  virtual ~DownloadCallback() = default;

  /// The first byte of the session `uid` is about to arrive. `signature` is data of the library
  /// about the file; often empty.
  virtual void httpTransferBegan(unsigned long long uid,
                                 const std::basic_string<unsigned char>& signature) = 0;

  /// `percent` (0..100) of the file is there; once per percent that changes.
  virtual void updateProgress(unsigned long long uid, int percent) = 0;

  /// The whole file is at its final place. The last report of the session.
  virtual void httpTransferComplete(unsigned long long uid) = 0;

  /// The session failed; `code` is the library's reason. The last report of the session.
  virtual void httpTransferBroke(unsigned long long uid, int code) = 0;

  /// One raw header line of the server's answer, line end included.
  virtual void httpHeaderReceived(unsigned long long uid, const std::string& line) = 0;
};

}  // namespace KPB
