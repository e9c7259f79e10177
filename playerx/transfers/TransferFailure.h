#pragma once

#include <cstdint>

namespace playerx {

/// Why a download session broke: the code of `KPB::DownloadCallback::httpTransferBroke`. Numbers
/// are stable. A value from 100 on is the status that the server answered with.
enum class TransferFailure : std::int32_t {
  kNone = 0,
  kUnsupportedAddress = 1,  ///< no http or https address, or one that cannot be parsed
  kBadName = 2,             ///< the output name is empty, too long, or leads out of its folder
  kNoSuchHost = 3,          ///< the host's name cannot be resolved
  kNoSuchProxy = 4,         ///< the proxy's name cannot be resolved
  kRefused = 5,             ///< the port accepts no connections
  kTimeout = 6,             ///< no connection in time
  kNetwork = 7,             ///< unreachable, or another failure of the network
  kTls = 8,                 ///< no secure connection could be agreed on
  kCertificate = 9,         ///< the server's certificate cannot be trusted
  kTrustFile = 10,          ///< the file of trusted certificates cannot be read
  kRedirectLoop = 11,       ///< too many redirects
  kBadRedirect = 12,        ///< redirected to something that is not an http or https address
  kDropped = 13,            ///< the line broke again and again
  kStalled = 14,            ///< no byte came for a long time, again and again
  kBadAnswer = 15,          ///< the server spoke nonsense
  kKeepsChanging = 16,      ///< the file at the server changed again and again meanwhile
  kNoSpace = 17,            ///< the disk of arriving files is full; what has arrived is kept
  kWriteFailed = 18,        ///< the disk does not take or give back what has arrived
  kTempFolder = 19,         ///< the folder for arriving files cannot be used
  kMediaFolder = 20,        ///< the folder for finished files cannot be used
  kInternal = 21,           ///< no memory, or another failure on this side
  kNoSpaceForFilm = 22,     ///< the disk of finished files is full; what has arrived is kept
  kWebPage = 23,            ///< the server sends a web page where a film should be
  kChecksum = 24,           ///< the whole file has another checksum than it should; it is deleted
  kNoChecksum = 25,         ///< no checksum file is beside the file, or it names no sum for it
};

/// The failure that stands for an HTTP status, 100..599.
constexpr TransferFailure failureOfStatus(int status) {
  return static_cast<TransferFailure>(status);
}

/// The HTTP status that a failure stands for; 0 for any other failure.
constexpr int statusOfFailure(TransferFailure failure) {
  const auto number = static_cast<std::int32_t>(failure);
  return number >= 100 ? number : 0;
}

}  // namespace playerx
