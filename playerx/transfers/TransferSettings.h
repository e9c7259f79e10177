#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace playerx {

/// Id under which the download library offers `TransferSettings`.
inline constexpr char DIN_TransferSettings[] = "com.vesk.playback.interface.TransferSettings";

/// How the film of one address is fetched. A record; text is UTF-8.
struct FilmOptions {
  std::string username{}, password{};  ///< for the host of the address alone
  unsigned tries = 0;                  ///< in a row without progress; 0: the library's default
  std::chrono::seconds timeout{0};     ///< to connect, and without a byte; 0: likewise
  std::vector<std::string> headers{};  ///< further ones, "Name: value"
  std::string referer{};               ///< empty: none is sent
  std::string netrcFile{};   ///< user names and passwords by host; empty: no such file is used
  std::string cookieFile{};  ///< cookies are read from it and kept in it; empty: none are used
  std::string sha256{};      ///< the sum that the film must have, in hexadecimal; empty: any
  /// The film must have the sum that a file beside it names: the same address with ".sha256".
  bool hasChecksumFile = false;

  bool operator==(const FilmOptions&) const = default;
};

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

  /// Sessions that wait before another try make it now, unless their server has asked for the
  /// pause. The library does so by itself when the network comes back.
  virtual void retryNow() = 0;

  /// Bytes per second that all sessions together receive; 0: no limit. Sessions that are under way
  /// follow at once.
  virtual void setRateLimit(std::uint64_t bytesPerSecond) = 0;

  /// How the film of this address is fetched by sessions started from now on. Header lines with
  /// control characters, and of headers that the library sets itself, are left out. A checksum is
  /// verified before the film gets its name; with another one, the session breaks with `kChecksum`.
  /// False, without effect, for a text that is no address or no checksum.
  virtual bool setFilmOptions(const std::string& urlUtf8, const FilmOptions& options) = 0;
};

}  // namespace playerx
