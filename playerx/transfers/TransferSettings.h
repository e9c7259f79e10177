#pragma once

#include <string>

namespace playerx {

/// Id under which the download library offers `TransferSettings`.
inline constexpr char DIN_TransferSettings[] = "com.vesk.playback.interface.TransferSettings";

/// What the host may set for all sessions of the download library. Offered by the library's
/// plug-in.
///
/// May be called from any thread at any time; requests sent from then on follow.
class TransferSettings {
 public:
  TransferSettings() = default;
  TransferSettings(const TransferSettings&) = delete;
  TransferSettings& operator=(const TransferSettings&) = delete;
  virtual ~TransferSettings() = default;

  /// Trust the certificates in this PEM file and no others. Empty: those that the environment names
  /// (CURL_CA_BUNDLE, SSL_CERT_FILE, SSL_CERT_DIR) when the library is loaded, or else the
  /// system's. A file that cannot be read breaks sessions over TLS with `kTrustFile`.
  virtual void setTrustFile(const std::string& pathUtf8) = 0;
};

}  // namespace playerx
