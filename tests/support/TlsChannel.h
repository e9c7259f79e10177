#pragma once

#include <openssl/ssl.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/support/TestPki.h"
#include "tests/support/UniqueFd.h"

namespace support {

/// How a server speaks TLS.
struct TlsSettings {
  enum class ClientCertificate { kNotAsked, kAsked, kRequired };

  Identity identity = {};
  int minVersion = TLS1_2_VERSION;
  int maxVersion = TLS1_3_VERSION;
  ClientCertificate clientCertificate = ClientCertificate::kNotAsked;
  std::optional<Identity> clientAuthority = {};  ///< none: any client certificate will do
  std::string cipherList = {};                   ///< for TLS 1.2 and older; empty: the library's
  std::string protocol = {};                     ///< ALPN protocol to choose; empty: none
};

using TlsContext = std::shared_ptr<SSL_CTX>;

/// A server context for the settings; std::runtime_error when they do not make one.
TlsContext makeServerContext(const TlsSettings& settings);

/// The peer has reset the line or gone away while something was to be sent.
struct PeerGone : std::runtime_error {
  PeerGone() : std::runtime_error("the peer is gone") {}
};

/// The server is being stopped.
struct ServerStopped : std::runtime_error {
  ServerStopped() : std::runtime_error("the server stops") {}
};

/// One accepted socket, plain or under TLS, whose every wait ends when the server stops.
/// Owner: the connection that serves it, on one thread. Failure: PeerGone, ServerStopped.
class TlsChannel {
 public:
  /// `stopFd` becomes readable when the server stops.
  TlsChannel(UniqueFd fd, int stopFd);

  /// Whether the handshake succeeds; else `handshakeError` has the library's text. `appData` is
  /// what the context's callbacks find at the SSL object.
  bool startTls(SSL_CTX* context, void* appData);
  const std::string& handshakeError() const { return handshakeError_; }
  SSL* ssl() const { return ssl_.get(); }
  /// Whether the peer goes through another handshake (TLS 1.2), in which it is asked for a
  /// certificate; else `handshakeError` has the library's text.
  bool renegotiate();

  /// At most `size` bytes; "" when the peer has ended its stream.
  std::string read(std::size_t size);
  void write(std::string_view bytes);

  /// Waits until the peer's program has taken everything that was sent.
  void waitUntilTaken();
  /// Waits until the peer has ended its stream or reset the line.
  void waitUntilPeerGone();

  /// Waits for `fd` to become readable; false when the time is over (negative: never).
  bool waitReadable(int fd, int milliseconds);

  void closeNotify();
  /// Ends the own stream, then throws away what still comes until the peer has closed too; so that
  /// an alert that was sent is not lost to a reset.
  void linger();
  void shutdownWrite();
  void closeNow();
  void reset();
  bool isOpen() const { return static_cast<bool>(fd_); }

 private:
  struct SslDeleter {
    void operator()(SSL* ssl) const { SSL_free(ssl); }
  };

  void noteFailure();
  void waitFor(short events);
  bool waitAfter(int result);
  std::size_t writeSome(std::string_view bytes);

  UniqueFd fd_;
  int stopFd_;
  std::unique_ptr<SSL, SslDeleter> ssl_;
  std::string handshakeError_;
};

}  // namespace support
