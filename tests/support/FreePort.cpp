#include "tests/support/FreePort.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <mutex>
#include <random>
#include <set>

#include "tests/support/UniqueFd.h"

namespace support {
namespace {

bool canBind(std::uint16_t port) {
  const UniqueFd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  return ::bind(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

std::uint16_t freePort() {
  static std::mutex mutex;
  static std::set<std::uint16_t> given;
  static std::mt19937 random{std::random_device{}()};
  const std::lock_guard lock(mutex);
  std::uniform_int_distribution<int> anyPort(12000, 31999);
  for (;;) {
    const auto port = static_cast<std::uint16_t>(anyPort(random));
    if (canBind(port) && given.insert(port).second) return port;
  }
}

}  // namespace

bool startOnFreePort(const std::function<bool(std::uint16_t)>& start) {
  constexpr int kAttempts = 5;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (start(freePort())) return true;
  }
  return false;
}

}  // namespace support
