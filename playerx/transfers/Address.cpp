#include "playerx/transfers/Address.h"

#include <curl/curl.h>

#include <algorithm>
#include <memory>
#include <string_view>

namespace playerx::transfers {
namespace {

struct CurlTextFree {
  void operator()(char* text) const { curl_free(text); }
};
struct CurlUrlFree {
  void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
using ParsedUrl = std::unique_ptr<CURLU, CurlUrlFree>;

std::string partOf(CURLU* url, CURLUPart part, unsigned flags = 0) {
  char* text = nullptr;
  if (curl_url_get(url, part, &text, flags) != CURLUE_OK) return {};
  const std::unique_ptr<char, CurlTextFree> owned(text);
  return text;
}

bool isControl(unsigned char byte) { return byte < 0x20 || byte == 0x7f; }

std::string escapedByte(unsigned char byte) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  return {'%', kDigits[byte >> 4U], kDigits[byte & 15U]};
}

// The host stays as it is: a name beyond ASCII has an encoding of its own.
std::string escapeBehindHost(const std::string& url) {
  const std::size_t scheme = url.find("://");
  if (scheme == std::string::npos) return url;
  const std::size_t host = std::min(url.find_first_of("/?#", scheme + 3), url.size());
  std::string escaped = url.substr(0, host);
  for (const char character : std::string_view(url).substr(host)) {
    const auto byte = static_cast<unsigned char>(character);
    const bool unsafe = byte <= 0x20 || byte >= 0x7f;
    escaped += unsafe ? escapedByte(byte) : std::string(1, character);
  }
  return escaped;
}

}  // namespace

std::optional<Address> parseAddress(const std::string& urlUtf8) {
  if (std::any_of(urlUtf8.begin(), urlUtf8.end(), isControl)) return std::nullopt;
  Address address{escapeBehindHost(urlUtf8), {}, {}};
  const ParsedUrl url(curl_url());
  if (!url || curl_url_set(url.get(), CURLUPART_URL, address.fetched.c_str(), 0) != CURLUE_OK) {
    return std::nullopt;
  }
  const std::string scheme = partOf(url.get(), CURLUPART_SCHEME);
  if (scheme != "http" && scheme != "https") return std::nullopt;
  for (const CURLUPart secret : {CURLUPART_USER, CURLUPART_PASSWORD, CURLUPART_FRAGMENT}) {
    curl_url_set(url.get(), secret, nullptr, 0);
  }
  address.remembered = partOf(url.get(), CURLUPART_URL, CURLU_NO_DEFAULT_PORT);
  curl_url_set(url.get(), CURLUPART_QUERY, nullptr, 0);
  address.place = partOf(url.get(), CURLUPART_URL, CURLU_NO_DEFAULT_PORT);
  return address;
}

}  // namespace playerx::transfers
