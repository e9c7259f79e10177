#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/UniqueFd.h"

namespace support {

/// A listening socket on 127.0.0.1 with a port that the system chose.
UniqueFd listenOnLoopback(int backlog = 128);

/// A connection to 127.0.0.1; empty when it is refused.
UniqueFd connectToLoopback(std::uint16_t port);

/// The port that a bound socket has.
std::uint16_t localPort(int fd);

/// Whether the program at the other end of a loopback connection has read every byte that was sent
/// to it, as the system's own account of that socket says; true also when that end is gone.
bool takenByPeer(int fd);

/// "scheme://host:port" followed by the path.
std::string loopbackUrl(const std::string& scheme, const std::string& host, std::uint16_t port,
                        const std::string& path);

/// Whether a process of this machine is waiting for a connection to the loopback port.
bool isConnecting(std::uint16_t port);

/// A port that refuses every connection: bound, so that no other process gets it, but without
/// listener.
class RefusingPort {
 public:
  RefusingPort();
  std::uint16_t port() const { return localPort(fd_.get()); }

 private:
  UniqueFd fd_;
};

/// A port where a connection attempt neither succeeds nor fails: a listener that never accepts and
/// whose queue is full, so that the system drops each further attempt without a word.
class SilentPort {
 public:
  SilentPort();
  std::uint16_t port() const { return localPort(listener_.get()); }

 private:
  UniqueFd listener_;
  std::vector<UniqueFd> fillers_;
};

}  // namespace support
