#pragma once

#include <string>

namespace playerx {

/// Whom the player tried to connect to: the server, one it was sent on to, or a proxy.
struct Peer {
  std::string name;  ///< host, and port where it is not the usual one: "films.test:8080"
  bool isProxy = false;
};

/// The peer that the library's technical words name, else the server of `host`. A proxy is known by
/// the environment (http_proxy, https_proxy, all_proxy).
Peer peerOf(const std::string& words, const std::string& host);

}  // namespace playerx
