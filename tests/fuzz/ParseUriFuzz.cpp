// Input: an address.
#include <algorithm>

#include "kvsc/HttpRequest.h"
#include "tests/fuzz/Fuzz.h"

namespace {

using kvsc::HttpRequest;

std::string lowerCased(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return text;
}

bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string uri = fuzz::textOf(data, size);
  std::string host;
  std::string port;
  std::string path;
  bool isHttps = false;
  const int result = HttpRequest::parseUri(uri, &host, &port, &path, &isHttps);
  fuzz::require(result == 0 || result == -1, "the result is 0 or -1");
  if (result != 0) return 0;

  const std::string lower = lowerCased(uri);
  fuzz::require(isHttps == holds(lower, "https"), "https is what holds the word");
  fuzz::require(holds(lower, "http"), "no other scheme passes");
  fuzz::require(!path.empty() && path[0] == '/', "the path begins with a slash");
  fuzz::require(!holds(host, "/"), "the host ends before the path");
  fuzz::require(host.find(':') == std::string::npos || host[0] == ':',
                "a port is cut off a host that has a name");
  fuzz::require(holds(uri, "//" + host), "the host stands in the address");
  fuzz::require(port == (isHttps ? "https" : "http") || holds(uri, ":" + port),
                "the port is the scheme's or stands in the address");
  fuzz::require(path == "/" || uri.compare(uri.size() - path.size(), path.size(), path) == 0,
                "the path is the end of the address");
  return 0;
}
