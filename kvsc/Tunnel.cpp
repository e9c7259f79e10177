#include "kvsc/Tunnel.h"

#include <array>

#include "kvsc/OpenSsl.h"
#include "kvsc/SSLSession.h"
#include "kvsc/SocketBio.h"

namespace kvsc {
namespace {

constexpr int kAnswerSize = 4096;

}  // namespace

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

bool openTunnel(BIO* bio, const SSLSession& session) {
  const std::string request = tunnelRequest(session);
  std::array<char, kAnswerSize> answer{};
  BIO_write(bio, request.data(), static_cast<int>(request.size()));
  BIO_read(bio, answer.data(), kAnswerSize);
  const Waiter* waiter = waiterOf(bio);
  return waiter == nullptr || waiter->outcome() == Waiter::Outcome::kReady;
}

}  // namespace kvsc
