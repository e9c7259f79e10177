#include "kvsc/Dialer.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <limits>
#include <utility>

#include "kvsc/OpenSsl.h"
#include "kvsc/TextScanner.h"
#include "kvsc/UniqueFd.h"
#include "kvsc/Waiter.h"

namespace kvsc {
namespace {

// A look-up has no descriptor to poll beside the token's, so the wait for it is cut into slices.
constexpr std::chrono::milliseconds kLookupSlice{10};

std::optional<std::uint16_t> portNumberIn(const std::string& text) {
  const std::optional<int> number = TextScanner(text).number();
  const bool isPort = number && *number > 0 && *number <= std::numeric_limits<std::uint16_t>::max();
  return isPort ? std::optional(static_cast<std::uint16_t>(*number)) : std::nullopt;
}

std::optional<std::uint16_t> portOfService(const std::string& name) {
  std::array<char, 4096> texts{};
  servent entry{};
  servent* found = nullptr;
  getservbyname_r(name.c_str(), "tcp", &entry, texts.data(), texts.size(), &found);
  if (found == nullptr) return std::nullopt;
  return ntohs(static_cast<std::uint16_t>(found->s_port));
}

std::string withoutBrackets(const std::string& host) {
  const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
  return bracketed ? host.substr(1, host.size() - 2) : host;
}

void setPort(sockaddr* address, std::uint16_t port) {
  if (address->sa_family == AF_INET) {
    reinterpret_cast<sockaddr_in*>(address)->sin_port = htons(port);
  } else if (address->sa_family == AF_INET6) {
    reinterpret_cast<sockaddr_in6*>(address)->sin6_port = htons(port);
  }
}

int pendingError(int fd) {
  int error = 0;
  socklen_t size = sizeof error;
  return getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

// Returns 0 or an errno value.
int connectSocket(int fd, const addrinfo& address, Waiter& waiter) {
  if (::connect(fd, address.ai_addr, address.ai_addrlen) == 0) return 0;
  if (errno != EINPROGRESS && errno != EINTR) return errno;
  const bool ready = waiter.waitFor(fd, POLLOUT) == Waiter::Outcome::kReady;
  return ready ? pendingError(fd) : waiter.error();
}

UniqueFd openSocket(const addrinfo& address, Waiter& waiter, int* error) {
  UniqueFd fd(::socket(address.ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP));
  *error = fd ? connectSocket(fd.get(), address, waiter) : errno;
  if (*error != 0) return UniqueFd();
  const int on = 1;
  setsockopt(fd.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  return fd;
}

/// A host or port for a diagnostic. Of "user:password@host:port" the host is "user" here, and all
/// behind it the port.
std::string withoutUser(const std::string& text) { return text.substr(text.rfind('@') + 1); }

}  // namespace

std::optional<std::uint16_t> servicePort(const std::string& port) {
  // These two must not depend on the system's list of services.
  if (port == "http") return 80;
  if (port == "https") return 443;
  if (port.empty() || port.find('\0') != std::string::npos) return std::nullopt;
  if (const auto number = portNumberIn(port)) return number;
  return portOfService(port);
}

TcpDialer::TcpDialer(StartNameLookup lookup) : lookup_(std::move(lookup)) {}

int TcpDialer::dial(const std::string& host, const std::string& port, Waiter& waiter) {
  const auto number = servicePort(port);
  if (!number) {
    raiseLookupError("no such port: " + withoutUser(port));
    return -1;
  }
  const Addresses addresses = resolve(withoutBrackets(host), waiter);
  if (!addresses) return -1;
  int firstError = 0;
  for (addrinfo* address = addresses.get(); address != nullptr; address = address->ai_next) {
    int error = 0;
    setPort(address->ai_addr, *number);
    UniqueFd fd = openSocket(*address, waiter, &error);
    if (fd) return fd.release();
    if (firstError == 0 || error == ECANCELED) firstError = error;
    if (!waiter.mayTryAgain()) break;
  }
  raiseSystemError(firstError, "connecting to " + host + ":" + withoutUser(port));
  return -1;
}

Addresses TcpDialer::resolve(const std::string& host, Waiter& waiter) {
  // The resolver takes an empty name for this machine and cuts a name at a zero byte.
  if (host.empty() || host.find('\0') != std::string::npos) {
    raiseLookupError("no such host: an empty name or one with a zero byte");
    return nullptr;
  }
  if (Addresses numeric = numericAddress(host)) return numeric;
  if (Addresses loopback = localhostAddresses(host)) return loopback;
  const std::unique_ptr<NameLookup> lookup = lookup_(host);
  const auto begin = Waiter::Clock::now();
  while (!lookup->waitFor(kLookupSlice)) {
    if (waiter.mayGoOn(begin) == Waiter::Outcome::kReady) continue;
    raiseSystemError(waiter.error(), "looking up " + withoutUser(host));
    return nullptr;
  }
  int error = 0;
  Addresses found = lookup->take(&error);
  if (!found) raiseLookupError("looking up " + withoutUser(host) + ": " + gai_strerror(error));
  return found;
}

}  // namespace kvsc
