#include "tests/support/Loopback.h"

#include <arpa/inet.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace support {
namespace {

sockaddr_in loopbackAddress(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

UniqueFd boundSocket(int flags = 0) {
  UniqueFd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | flags, 0));
  const sockaddr_in address = loopbackAddress(0);
  if (::bind(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    throw std::runtime_error("cannot bind a loopback socket");
  return fd;
}

sockaddr_in addressOf(int fd, decltype(&::getsockname) ask) {
  sockaddr_in address{};
  socklen_t length = sizeof address;
  if (ask(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) address.sin_port = 0;
  return address;
}

struct DiagRequest {
  nlmsghdr header;
  inet_diag_req_v2 body;
};

// The question is put for the far end, so its source is our peer.
DiagRequest diagRequest(const sockaddr_in& peer, const sockaddr_in& own) {
  DiagRequest request{};
  request.header.nlmsg_len = sizeof request;
  request.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
  request.header.nlmsg_flags = NLM_F_REQUEST;
  request.body.sdiag_family = AF_INET;
  request.body.sdiag_protocol = IPPROTO_TCP;
  request.body.idiag_states = ~0U;
  request.body.idiag_ext = 1 << (INET_DIAG_INFO - 1);
  request.body.id.idiag_sport = peer.sin_port;
  request.body.id.idiag_dport = own.sin_port;
  request.body.id.idiag_src[0] = peer.sin_addr.s_addr;
  request.body.id.idiag_dst[0] = own.sin_addr.s_addr;
  request.body.id.idiag_cookie[0] = INET_DIAG_NOCOOKIE;
  request.body.id.idiag_cookie[1] = INET_DIAG_NOCOOKIE;
  return request;
}

std::vector<char> askSystem(const DiagRequest& request) {
  const UniqueFd netlink(::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
  std::vector<char> answer(8192);
  if (!netlink || ::send(netlink.get(), &request, sizeof request, 0) < 0)
    throw std::runtime_error("the system does not tell about its sockets");
  const ssize_t got = ::recv(netlink.get(), answer.data(), answer.size(), 0);
  answer.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  return answer;
}

template <typename T>
T copyFrom(const std::vector<char>& bytes, std::size_t at) {
  T value{};
  if (at < bytes.size())
    std::memcpy(&value, bytes.data() + at, std::min(sizeof value, bytes.size() - at));
  return value;
}

struct SocketState {
  bool exists = false;
  std::uint64_t received = 0;  // bytes that have arrived
  std::uint32_t unread = 0;    // bytes of them that the program has not read
};

SocketState stateFrom(const std::vector<char>& answer) {
  SocketState state;
  state.exists = copyFrom<nlmsghdr>(answer, 0).nlmsg_type == SOCK_DIAG_BY_FAMILY;
  state.unread = copyFrom<inet_diag_msg>(answer, NLMSG_HDRLEN).idiag_rqueue;
  std::size_t at = NLMSG_HDRLEN + NLMSG_ALIGN(sizeof(inet_diag_msg));
  while (at + sizeof(rtattr) <= answer.size()) {
    const auto attribute = copyFrom<rtattr>(answer, at);
    if (attribute.rta_type == INET_DIAG_INFO)
      state.received = copyFrom<tcp_info>(answer, at + RTA_LENGTH(0)).tcpi_bytes_received;
    at += RTA_ALIGN(std::max<std::size_t>(attribute.rta_len, sizeof(rtattr)));
  }
  return state;
}

std::uint64_t bytesSent(int fd) {
  tcp_info info{};
  socklen_t length = sizeof info;
  getsockopt(fd, IPPROTO_TCP, TCP_INFO, &info, &length);
  return info.tcpi_bytes_sent - info.tcpi_bytes_retrans + info.tcpi_notsent_bytes;
}

}  // namespace

UniqueFd listenOnLoopback(int backlog) {
  UniqueFd fd = boundSocket();
  if (::listen(fd.get(), backlog) != 0) throw std::runtime_error("cannot listen on loopback");
  return fd;
}

UniqueFd connectToLoopback(std::uint16_t port) {
  UniqueFd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_in address = loopbackAddress(port);
  if (::connect(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    return UniqueFd();
  return fd;
}

std::uint16_t localPort(int fd) { return ntohs(addressOf(fd, &::getsockname).sin_port); }

bool takenByPeer(int fd) {
  const sockaddr_in peer = addressOf(fd, &::getpeername);
  if (peer.sin_port == 0) return true;
  const SocketState state = stateFrom(askSystem(diagRequest(peer, addressOf(fd, &::getsockname))));
  return !state.exists || (state.unread == 0 && state.received >= bytesSent(fd));
}

std::string loopbackUrl(const std::string& scheme, const std::string& host, std::uint16_t port,
                        const std::string& path) {
  return scheme + "://" + host + ":" + std::to_string(port) + path;
}

// "sl local_address rem_address st": the addresses as hexadecimal host:port, 02 for an attempt.
bool isConnecting(std::uint16_t port) {
  std::ifstream sockets("/proc/net/tcp");
  std::string line, number, local, remote, state;
  while (std::getline(sockets, line)) {
    std::istringstream(line) >> number >> local >> remote >> state;
    const std::size_t colon = remote.find(':');
    if (state != "02" || colon == std::string::npos) continue;
    if (std::stoul(remote.substr(colon + 1), nullptr, 16) == port) return true;
  }
  return false;
}

RefusingPort::RefusingPort() : fd_(boundSocket()) {}

// The queue is full when an attempt does not come to an end at once. That attempt is given up: it
// would be taken for the one that a test waits for.
SilentPort::SilentPort() : listener_(listenOnLoopback(0)) {
  const sockaddr_in address = loopbackAddress(port());
  for (int attempt = 0; attempt < 64; ++attempt) {
    UniqueFd filler(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    ::connect(filler.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    pollfd ready{filler.get(), POLLOUT, 0};
    if (::poll(&ready, 1, 100) == 0) return;
    fillers_.push_back(std::move(filler));
  }
  throw std::runtime_error("the listener's queue never fills");
}

}  // namespace support
