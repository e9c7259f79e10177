#include "kvsc/ServicePort.h"

#include <arpa/inet.h>
#include <netdb.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace kvsc {
namespace {

constexpr const char* kBlanks = " \t\n\v\f\r";

// The number that `text` begins with, as a conversion to an unsigned number reads it: after blanks
// and a plus sign, up to the first other character. Nothing when that is no port.
std::optional<std::uint16_t> numberIn(const std::string& text) {
  std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
  if (begin < text.size() && text[begin] == '+') ++begin;
  std::uint16_t number = 0;
  const auto read = std::from_chars(text.data() + begin, text.data() + text.size(), number);
  if (read.ec != std::errc() || number == 0) return std::nullopt;
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
