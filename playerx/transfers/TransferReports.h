#pragma once

#include <cstdint>
#include <string>

#include "playerx/transfers/TransferFailure.h"

namespace playerx {

/// Id under which the download library offers `TransferReports`.
inline constexpr char DIN_TransferReports[] = "com.vesk.playback.interface.TransferReports";

/// Where a download session stands.
enum class TransferPhase : std::int32_t {
  kWaiting = 0,   ///< not connected: about to begin, or pausing before a retry
  kArriving = 1,  ///< a request is under way
  kPlacing = 2,   ///< every byte is there; the file is on its way to its final place
  kComplete = 3,  ///< the file is at `finalPath`
  kBroken = 4,    ///< failed as `failure` says
  kStopped = 5,   ///< stopped on request before its end
};

/// What is known of one download session at one moment. A record; text is UTF-8.
struct TransferReport {
  unsigned long long uid = 0;  ///< 0 for a session that was refused at its start
  std::string address;         ///< as given, without user name, password and fragment
  std::string requestedPath;   ///< movies folder and output name, joined by "/"
  std::string partialPath;     ///< the file that the bytes are written to; empty before the first
  std::string finalPath;       ///< where the finished file lies; empty until it is complete
  TransferPhase phase = TransferPhase::kWaiting;
  std::uint64_t arrived = 0;    ///< bytes, those of earlier sessions included
  std::uint64_t total = 0;      ///< bytes; 0 when not known
  unsigned failedAttempts = 0;  ///< in a row, without progress between them
  /// The last failure, also one that is being retried (`phase` below `kComplete`); kNone when the
  /// last attempt went well.
  TransferFailure failure = TransferFailure::kNone;
  /// Technical words on `failure`, for people who know the field; may be empty.
  std::string detail;
};

/// What the host can learn of download sessions beyond the reports that `KPB::DownloadCallback`
/// gives: reasons, bytes, final paths. Offered by the download library's plug-in.
///
/// All operations may be called from any thread, also from within a report; none waits for the
/// network or the disk. The last few hundred sessions of the process are remembered. Each operation
/// stores what it finds in `*report` and returns true, or returns false and leaves `*report` alone.
class TransferReports {
 public:
  TransferReports() = default;
  TransferReports(const TransferReports&) = delete;
  TransferReports& operator=(const TransferReports&) = delete;
  virtual ~TransferReports() = default;

  /// The latest session of this address, as it was given to `startSession`; also one that was
  /// refused there.
  virtual bool findByAddress(const std::string& urlUtf8, TransferReport* report) const = 0;

  /// The latest session that was to place its file at this path, or has placed it there.
  virtual bool findByPath(const std::string& pathUtf8, TransferReport* report) const = 0;
};

}  // namespace playerx
