#include "tests/support/TlsChannel.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <openssl/x509.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

#include "tests/support/Loopback.h"

namespace support {
namespace {

int acceptAnyCertificate(int, X509_STORE_CTX*) { return 1; }

std::string libraryText() {
  char text[256];
  ERR_error_string_n(ERR_peek_last_error(), text, sizeof text);
  ERR_clear_error();
  return text;
}

void require(bool done) {
  if (!done) throw std::runtime_error("cannot make a server context: " + libraryText());
}

int chooseProtocol(SSL*, const unsigned char** out, unsigned char* outLength,
                   const unsigned char* in, unsigned inLength, void* wanted) {
  const auto* protocol = static_cast<const std::string*>(wanted);
  for (unsigned at = 0; at + in[at] < inLength; at += in[at] + 1U) {
    const std::string_view offered(reinterpret_cast<const char*>(in + at + 1), in[at]);
    if (offered != *protocol) continue;
    *out = in + at + 1;
    *outLength = in[at];
    return SSL_TLSEXT_ERR_OK;
  }
  return SSL_TLSEXT_ERR_NOACK;
}

void askForCertificate(SSL_CTX* context, const TlsSettings& settings) {
  using Wish = TlsSettings::ClientCertificate;
  if (settings.clientCertificate == Wish::kNotAsked) return;
  const int required =
      settings.clientCertificate == Wish::kRequired ? SSL_VERIFY_FAIL_IF_NO_PEER_CERT : 0;
  SSL_CTX_set_verify(context, SSL_VERIFY_PEER | required,
                     settings.clientAuthority ? nullptr : &acceptAnyCertificate);
  if (!settings.clientAuthority) return;
  X509* authority = settings.clientAuthority->certificate.get();
  require(X509_STORE_add_cert(SSL_CTX_get_cert_store(context), authority) == 1);
  require(SSL_CTX_add_client_CA(context, authority) == 1);
}

void presentIdentity(SSL_CTX* context, const Identity& identity) {
  require(SSL_CTX_use_certificate(context, identity.certificate.get()) == 1);
  require(SSL_CTX_use_PrivateKey(context, identity.key.get()) == 1);
  for (const Certificate& link : identity.chain)
    require(SSL_CTX_add1_chain_cert(context, link.get()) == 1);
}

TlsContext newContext(const TlsSettings& settings) {
  // The callback's argument must live as long as the context.
  auto protocol = std::make_shared<std::string>(settings.protocol);
  TlsContext context(SSL_CTX_new(TLS_server_method()),
                     [protocol](SSL_CTX* old) { SSL_CTX_free(old); });
  require(context != nullptr);
  if (!protocol->empty())
    SSL_CTX_set_alpn_select_cb(context.get(), &chooseProtocol, protocol.get());
  return context;
}

}  // namespace

TlsContext makeServerContext(const TlsSettings& settings) {
  TlsContext context = newContext(settings);
  // Weak on purpose: what is refused must be refused by the client under test.
  SSL_CTX_set_security_level(context.get(), 0);
  require(SSL_CTX_set_min_proto_version(context.get(), settings.minVersion) == 1);
  require(SSL_CTX_set_max_proto_version(context.get(), settings.maxVersion) == 1);
  if (!settings.cipherList.empty())
    require(SSL_CTX_set_cipher_list(context.get(), settings.cipherList.c_str()) == 1);
  static const unsigned char kSessionContext[] = "loopback";
  SSL_CTX_set_session_id_context(context.get(), kSessionContext, sizeof kSessionContext - 1);
  if (settings.identity.certificate) presentIdentity(context.get(), settings.identity);
  askForCertificate(context.get(), settings);
  return context;
}

TlsChannel::TlsChannel(UniqueFd fd, int stopFd) : fd_(std::move(fd)), stopFd_(stopFd) {
  const int on = 1;
  setsockopt(fd_.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  fcntl(fd_.get(), F_SETFL, fcntl(fd_.get(), F_GETFL) | O_NONBLOCK);
}

bool TlsChannel::startTls(SSL_CTX* context, void* appData) {
  ssl_.reset(SSL_new(context));
  SSL_set_app_data(ssl_.get(), appData);
  SSL_set_fd(ssl_.get(), fd_.get());
  for (;;) {
    ERR_clear_error();
    const int result = SSL_accept(ssl_.get());
    if (result == 1) return true;
    if (waitAfter(result)) continue;
    noteFailure();
    return false;
  }
}

void TlsChannel::noteFailure() {
  handshakeError_ = ERR_peek_last_error() != 0 ? libraryText() : "the peer went away";
}

bool TlsChannel::renegotiate() {
  ERR_clear_error();
  SSL_set_verify(ssl_.get(), SSL_VERIFY_PEER, &acceptAnyCertificate);
  SSL_set_options(ssl_.get(), SSL_OP_NO_SESSION_RESUMPTION_ON_RENEGOTIATION);
  SSL_renegotiate(ssl_.get());
  int result = SSL_do_handshake(ssl_.get());  // sends the request for it
  char unused = 0;
  while (SSL_renegotiate_pending(ssl_.get()) == 1) {
    result = SSL_peek(ssl_.get(), &unused, 1);
    if (result > 0 || SSL_renegotiate_pending(ssl_.get()) != 1 || waitAfter(result)) continue;
    noteFailure();
    return false;
  }
  return true;
}

std::string TlsChannel::read(std::size_t size) {
  std::string bytes(size, '\0');
  while (fd_) {
    errno = 0;
    ERR_clear_error();
    const ssize_t got = ssl_ ? SSL_read(ssl_.get(), bytes.data(), static_cast<int>(size))
                             : ::recv(fd_.get(), bytes.data(), size, 0);
    if (got > 0) return bytes.substr(0, static_cast<std::size_t>(got));
    if (ssl_ && waitAfter(static_cast<int>(got))) continue;
    if (ssl_ || got == 0) return {};
    if (errno != EAGAIN && errno != EINTR) throw PeerGone();
    waitFor(POLLIN);
  }
  return {};
}

void TlsChannel::write(std::string_view bytes) {
  while (!bytes.empty()) bytes.remove_prefix(writeSome(bytes));
}

std::size_t TlsChannel::writeSome(std::string_view bytes) {
  if (!fd_) throw PeerGone();
  errno = 0;
  ERR_clear_error();
  const ssize_t sent = ssl_ ? SSL_write(ssl_.get(), bytes.data(), static_cast<int>(bytes.size()))
                            : ::send(fd_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
  if (sent > 0) return static_cast<std::size_t>(sent);
  if (ssl_) {
    if (!waitAfter(static_cast<int>(sent))) throw PeerGone();
  } else if (errno == EAGAIN || errno == EINTR) {
    waitFor(POLLOUT);
  } else {
    throw PeerGone();
  }
  return 0;
}

void TlsChannel::waitUntilTaken() {
  while (!takenByPeer(fd_.get())) {
    waitReadable(stopFd_, 0);
    std::this_thread::sleep_for(std::chrono::microseconds(50));
  }
}

void TlsChannel::waitUntilPeerGone() { waitFor(POLLRDHUP); }

bool TlsChannel::waitReadable(int fd, int milliseconds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        end - std::chrono::steady_clock::now());
    pollfd watched[] = {{stopFd_, POLLIN, 0}, {fd, POLLIN, 0}};
    const int timeout = milliseconds < 0 ? -1 : std::max(0, static_cast<int>(left.count()));
    const int ready = ::poll(watched, 2, timeout);
    if (watched[0].revents != 0) throw ServerStopped();
    if (ready > 0) return true;
    if (ready == 0) return false;
  }
}

void TlsChannel::waitFor(short events) {
  pollfd watched[] = {{fd_.get(), events, 0}, {stopFd_, POLLIN, 0}};
  ::poll(watched, 2, -1);
  if (watched[1].revents != 0) throw ServerStopped();
}

// Whether the operation shall be tried again.
bool TlsChannel::waitAfter(int result) {
  const int why = SSL_get_error(ssl_.get(), result);
  if (why == SSL_ERROR_WANT_READ) return waitFor(POLLIN), true;
  if (why == SSL_ERROR_WANT_WRITE) return waitFor(POLLOUT), true;
  return false;
}

void TlsChannel::closeNotify() {
  if (ssl_ && SSL_is_init_finished(ssl_.get())) SSL_shutdown(ssl_.get());
  ERR_clear_error();
}

void TlsChannel::linger() {
  ssl_.reset();
  shutdownWrite();
  try {
    while (!read(4096).empty()) {
    }
  } catch (const PeerGone&) {
    // That is an end, too.
  }
  closeNow();
}

void TlsChannel::shutdownWrite() { ::shutdown(fd_.get(), SHUT_WR); }

void TlsChannel::closeNow() {
  ssl_.reset();
  fd_ = UniqueFd();
}

void TlsChannel::reset() {
  const ::linger atOnce{1, 0};
  setsockopt(fd_.get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
  closeNow();
}

}  // namespace support
