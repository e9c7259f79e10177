#include "kvsc/ServicePort.h"

#include <arpa/inet.h>
#include <netdb.h>

#include <array>
#include <charconv>

namespace kvsc {
namespace {

std::optional<std::uint16_t> numberIn(const std::string& text) {
  std::uint16_t number = 0;
  const char* end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  if (read.ec != std::errc() || read.ptr != end || number == 0) return std::nullopt;
  return number;
}

std::optional<std::uint16_t> namedService(const std::string& name) {
  std::array<char, 4096> texts{};
  servent entry{};
  servent* found = nullptr;
  getservbyname_r(name.c_str(), "tcp", &entry, texts.data(), texts.size(), &found);
  if (found == nullptr) return std::nullopt;
  return ntohs(static_cast<std::uint16_t>(found->s_port));
}

}  // namespace

std::optional<std::uint16_t> servicePort(const std::string& port) {
  // The two that every address stands on do not depend on the system's list of services.
  if (port == "http") return 80;
  if (port == "https") return 443;
  if (port.empty() || port.find('\0') != std::string::npos) return std::nullopt;
  if (const auto number = numberIn(port)) return number;
  return namedService(port);
}

}  // namespace kvsc
