#pragma once

#include <cstdint>
#include <string>

/// Records of the host's rights library. Plain values; wide text is UTF-32, narrow text is opaque
/// bytes unless said otherwise.

/// One decoded rights-protected ticket.
struct VeskDrmTicketData {
  std::string ticket;                         ///< needed later to authorise the download
  std::wstring title;                         ///< display title, base of the local file name
  std::int32_t contentEncryptionUsageId = 0;  ///< identifies the content
  std::wstring contentProviderDisplayName;    ///< for display
  std::string version;                        ///< of the record, such as "2.0"
};

/// Answer of the online services to a request for download authorisation.
struct VeskDrmDownloadAuthorization {
  bool success = false;         ///< whether the download may begin
  std::int32_t errorCode = 0;   ///< meaningful when `success` is false
  std::wstring errorDetails;    ///< for people; meaningful when `success` is false
  std::string tempUsername;     ///< credentials for the content server
  std::string tempPassword;     ///< valid for a short time, like `tempUsername`
  std::string url;              ///< where the content is, UTF-8
  std::int32_t ticketId = 0;    ///< above 0: the download must be confirmed
  std::uint64_t totalSize = 0;  ///< bytes
  std::string strdChunkBase64;  ///< rights data, URL-safe base64
};

/// What the rights library knows of a protected file that was opened for playback.
struct VeskDrmPlaybackAuthorizationResponse {
  std::uint64_t fileSize = 0;  ///< bytes of the whole file
  std::wstring title;          ///< display title
  std::string ticket;          ///< that the film came with
};

/// The transaction by which a protected file was opened.
struct VeskDrmTransactionRecord {
  std::int32_t contentEncryptionUsageId = 0;  ///< identifies the content
};
