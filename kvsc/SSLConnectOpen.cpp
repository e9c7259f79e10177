// From the session's settings to an open connection.
#include <array>

#include "kvsc/Dialer.h"
#include "kvsc/HttpRequest.h"
#include "kvsc/NameLookup.h"
#include "kvsc/OpenSsl.h"
#include "kvsc/SSLConnect.h"
#include "kvsc/SocketBio.h"

namespace kvsc {
namespace {

Waiter waiterFor(const SSLSession& session) {
  return Waiter(session.getCancelToken(), Waiter::Milliseconds(session.getWaitTimeout()),
                Waiter::Milliseconds(session.getExchangeTimeout()));
}

int dialFor(const SSLSession& session, Waiter& waiter) {
  TcpDialer tcp;
  Dialer* dialer = session.getDialer() != nullptr ? session.getDialer() : &tcp;
  if (session.getProxyURL().empty()) {
    return dialer->dial(session.getHost(), session.getPort(), waiter);
  }
  return dialer->dial(session.getProxyURL(), std::to_string(session.getProxyPort()), waiter);
}

std::string tunnelRequest(const SSLSession& session) {
  return "CONNECT " + session.getHost() + ":" + session.getPort() +
         " HTTP/1.0\r\n"
         "User-Agent: " +
         session.getUserAgent() +
         "\r\n"
         "Host: " +
         session.getHost() +
         "\r\n"
         "Content-Length: 0\r\n"
         "Proxy-Connection: Keep-Alive\r\n"
         "Pragma: no-cache\r\n\r\n";
}

// Asks the proxy for a tunnel to the server. Its answer is read once and ignored, so only a wait
// that failed is a failure.
bool openTunnel(BIO* bio, const SSLSession& session) {
  const std::string request = tunnelRequest(session);
  std::array<char, 4096> answer{};
  BIO_write(bio, request.data(), static_cast<int>(request.size()));
  BIO_read(bio, answer.data(), static_cast<int>(answer.size()));
  return waiterOf(bio)->outcome() == Waiter::Outcome::kReady;
}

// Server name indication lets the server choose its certificate. It is defined for names only, not
// for addresses, and without a trailing dot.
bool sendServerName(SSL* ssl, std::string host) {
  if (host.ends_with('.')) host.pop_back();
  // An IPv6 address may come in brackets.
  if (host.empty() || host.front() == '[' || numericAddress(host)) return true;
  return SSL_set_tlsext_host_name(ssl, host.c_str()) == 1;
}

}  // namespace

BIO* SSLConnect::connect(SSLSession* session) {
  try {
    ERR_clear_error();
    refusedByList_ = false;
    return open(session);
  } catch (...) {
    session->setHandshakeOwner(nullptr);
    storeText("SSLConnect::connect() Unknown exception caught");
    return nullptr;
  }
}

BIO* SSLConnect::open(SSLSession* session) {
  const std::string refusal = HttpRequest::findForbidden({.host = session->getHost(),
                                                          .port = session->getPort(),
                                                          .userAgent = session->getUserAgent()});
  if (!refusal.empty()) {
    errorString_ = refusal;
    return nullptr;
  }
  std::string* password = session->getPassword().empty() ? nullptr : session->getPasswordAddress();
  if (session->getUseSSL() && setupContext(session, password) == 0) return nullptr;
  BIO* bio = dial(session);
  if (bio == nullptr) return nullptr;
  if (!session->getProxyURL().empty() && !openTunnel(bio, *session)) return nullptr;
  if (session->getUseSSL()) return handshake(session);
  session->setHandshakeOwner(nullptr);
  return bio;
}

BIO* SSLConnect::dial(SSLSession* session) {
  Waiter waiter = waiterFor(*session);
  if (waiter.mayGoOn(Waiter::Clock::now()) != Waiter::Outcome::kReady) {
    raiseSystemError(waiter.error(), "connecting");
    return nullptr;
  }
  const int fd = dialFor(*session, waiter);
  BioPtr bio = fd >= 0 ? newSocketBio(fd, waiter) : nullptr;
  session->setConnect(bio.release());
  return session->getConnect();
}

BIO* SSLConnect::handshake(SSLSession* session) {
  SSL* ssl = SSL_new(session->getSslContext());
  if (ssl == nullptr) return nullptr;
  session->setHandshakeOwner(this);
  SSL_set_app_data(ssl, session);
  session->setSsl(ssl);
  SSL_set_bio(ssl, session->getConnect(), session->getConnect());
  ERR_clear_error();
  const int result = sendServerName(ssl, session->getHost()) ? SSL_connect(ssl) : -1;
  const int error = result > 0 ? SSL_ERROR_NONE : SSL_get_error(ssl, result);
  session->setHandshakeOwner(nullptr);
  if (result > 0) return session->getConnect();
  if (errorString_.empty()) errorString_ = sslErrorName(error);
  return nullptr;
}

}  // namespace kvsc
