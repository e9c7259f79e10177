#include "playerx/transfers/NetworkWatch.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>

#include <array>

namespace playerx::transfers {
namespace {

constexpr unsigned kGroups =
    RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;

Descriptor openSocket() {
  Descriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE));
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = kGroups;
  const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
  if (socket.get() < 0 || ::bind(socket.get(), generic, sizeof address) != 0) return Descriptor(-1);
  return socket;
}

bool isArrival(const nlmsghdr* message) {
  if (message->nlmsg_type == RTM_NEWADDR || message->nlmsg_type == RTM_NEWROUTE) return true;
  if (message->nlmsg_type != RTM_NEWLINK) return false;
  const auto* const link = static_cast<const ifinfomsg*>(NLMSG_DATA(message));
  return (link->ifi_flags & IFF_RUNNING) != 0;
}

}  // namespace

NetworkWatch::NetworkWatch() : socket_(openSocket()) {}

bool NetworkWatch::takeArrival() {
  alignas(nlmsghdr) std::array<char, 16'384> buffer{};
  bool hasCome = false;
  ssize_t length = 0;
  while ((length = ::recv(socket_.get(), buffer.data(), buffer.size(), 0)) > 0) {
    auto left = static_cast<unsigned>(length);
    const auto* message = reinterpret_cast<const nlmsghdr*>(buffer.data());
    for (; NLMSG_OK(message, left); message = NLMSG_NEXT(message, left)) {
      hasCome = hasCome || isArrival(message);
    }
  }
  return hasCome;
}

}  // namespace playerx::transfers
