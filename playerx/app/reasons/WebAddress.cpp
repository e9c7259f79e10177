#include "playerx/app/reasons/WebAddress.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace playerx {

namespace {

constexpr int kLastPort = 65535;

bool isWeb(const std::string& address) {
  const std::string scheme = address.substr(0, address.find("://"));
  std::string lower = scheme;
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return scheme.size() < address.size() && (lower == "http" || lower == "https");
}

/// What stands between the "//" and the path.
std::string authorityOf(const std::string& address) {
  const std::size_t start = address.find("://");
  if (start == std::string::npos) return "";
  const std::size_t end = address.find_first_of("/?#", start + 3);
  return address.substr(start + 3, std::min(end, address.size()) - start - 3);
}

std::string portOf(const std::string& address) {
  const std::string authority = authorityOf(address);
  const std::size_t colon = authority.rfind(':');
  const std::size_t bracket = authority.rfind(']');  // the colons of a numeric host are no port's
  const bool isInHost = bracket != std::string::npos && colon < bracket;
  return colon == std::string::npos || isInHost ? "" : authority.substr(colon + 1);
}

}  // namespace

bool hasBadPort(const std::string& address) {
  const std::string port = portOf(address);
  if (port.empty()) return false;
  int number = 0;
  const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), number);
  const bool isWhole = error == std::errc() && end == port.data() + port.size();
  return !isWhole || number < 1 || number > kLastPort;
}

std::string faultOfAddress(const std::string& address) {
  if (!isWeb(address)) return "";
  if (hasBadPort(address)) {
    return "There is no port " + portOf(address) + "; give one from 1 to 65535 in the address.";
  }
  const bool needsEscape = std::any_of(address.begin(), address.end(), [](unsigned char letter) {
    return letter <= ' ' || letter == 0x7F;
  });
  if (!needsEscape) return "";
  return "The address holds a character that must be escaped, such as a space, which is written "
         "%20.";
}

}  // namespace playerx
