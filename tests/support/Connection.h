#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

#include "tests/support/Gate.h"
#include "tests/support/TlsChannel.h"

namespace support {

/// What a scripted server has seen of one connection.
struct ConnectionRecord {
  std::string received;        ///< every byte the peer has sent, decrypted
  bool ended = false;          ///< the script is over and the socket closed
  bool lost = false;           ///< the peer reset the line or left while bytes were to be sent
  bool handshakeDone = false;  ///< TLS only, as all that follows
  std::string handshakeError;
  bool serverNameSent = false;  ///< server name indication was there
  std::string serverName;
  std::string clientSubject;  ///< "" without a client certificate
  std::string protocol;       ///< "TLSv1.3"
  std::string cipher;
  bool resumed = false;  ///< the peer came back with an earlier session
  int renegotiations = 0;
};

/// One connection of a scripted server, as the steps of a script see it. Every operation waits for
/// the peer as long as it takes, or until the server stops.
/// Owner: the server, on the connection's own thread. Failure: PeerGone, ServerStopped.
class Connection {
 public:
  using Update = std::function<void(const std::function<void(ConnectionRecord&)>&)>;

  /// `update` changes the connection's record in the server's keeping.
  Connection(UniqueFd fd, int stopFd, TlsContext context, Update update);

  /// Makes a context tell its connections the server name that the peer indicates.
  static void watchServerNames(SSL_CTX* context);

  /// Reads up to and including the blank line after the headers; what has been read already by
  /// a handler is not waited for again. Returns the request's head.
  const std::string& readRequest();
  /// Reads `count` bytes more; fewer when the peer ends its stream.
  std::string readBytes(std::size_t count);
  /// Reads until the peer closes or resets.
  void readToEnd();

  void send(std::string_view bytes);
  /// Sends pieces of `size` bytes, each as a segment of its own that the peer's program has read
  /// before the next one is sent.
  void sendPieces(std::string_view bytes, std::size_t size);
  /// Sends one byte per interval.
  void drip(std::string_view bytes, std::chrono::milliseconds interval);

  void startTls();
  /// Asks for another handshake with a client certificate, under TLS 1.2. The record counts those
  /// that the peer went through; after one that it refused the line is dead.
  void renegotiate();
  /// Presents another certificate in the next handshake.
  void present(const Identity& identity);

  void waitFor(const Gate& gate);
  /// Does nothing until the server stops or the peer goes away; reads nothing.
  void stall();

  /// Says goodbye properly, then reads on until the peer closes too.
  void close();
  /// As `close`, but under TLS without the closing alert: a truncated stream.
  void truncate();
  /// Closes the socket without waiting for the peer.
  void closeNow();
  /// Ends with a reset.
  void reset();
  /// Ends the own stream only.
  void halfClose();
  bool isOpen() const { return channel_.isOpen(); }

 private:
  std::string read(std::size_t size);
  void endStream();
  void noteHandshake(bool done);
  static int onServerName(SSL* ssl, int* alert, void* unused);

  TlsChannel channel_;
  int stopFd_;
  TlsContext context_;
  Update update_;
  std::string request_;
  std::string pending_;  // read beyond the request's head
};

}  // namespace support
