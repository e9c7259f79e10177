#include "playerx/app/reasons/Peer.h"

#include <algorithm>
#include <cstdlib>
#include <regex>

namespace playerx {

namespace {

/// Whether one of the proxies of the environment is `host` at `port`.
bool isProxyOfEnvironment(const std::string& host, const std::string& port) {
  const auto names = [&](const char* variable) {
    const char* value = std::getenv(variable);
    if (value == nullptr) return false;
    std::string proxy = value;
    while (proxy.ends_with('/')) proxy.pop_back();
    const std::string place = host + ":" + port;
    return proxy == place || proxy.ends_with("/" + place) || proxy.ends_with("@" + place);
  };
  static constexpr const char* kVariables[] = {"http_proxy", "https_proxy", "HTTPS_PROXY",
                                               "all_proxy", "ALL_PROXY"};
  return std::any_of(std::begin(kVariables), std::end(kVariables), names);
}

}  // namespace

Peer peerOf(const std::string& words, const std::string& host) {
  static const std::regex kPlace(R"(Failed to connect to (\S+) port (\d+) )");
  std::smatch found;
  if (!std::regex_search(words, found, kPlace)) return {host, false};
  const std::string name = found[1];
  const std::string port = found[2];
  const bool isUsual = port == "80" || port == "443";
  return {isUsual ? name : name + ":" + port, isProxyOfEnvironment(name, port)};
}

}  // namespace playerx
