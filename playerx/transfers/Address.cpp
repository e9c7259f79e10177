#include "playerx/transfers/Address.h"

#include <curl/curl.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <string_view>

#include "playerx/platform/Text.h"

namespace playerx {
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

void appendEscapedIf(bool isUnsafe, unsigned char byte, std::string& text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  if (isUnsafe) {
    text.append({'%', kDigits[byte >> 4U], kDigits[byte & 15U]});
  } else {
    text += static_cast<char>(byte);
  }
}

/// Where the host begins in an http or https address; npos in every other text.
std::size_t startOfHost(const std::string& url) {
  for (const std::string_view scheme : {"http://", "https://"}) {
    const bool fits = std::equal(scheme.begin(), scheme.end(), url.begin(),
                                 url.begin() + std::min(url.size(), scheme.size()),
                                 [](char a, unsigned char b) { return a == std::tolower(b); });
    if (fits) return scheme.size();
  }
  return std::string::npos;
}

// The host stays as it is: a name beyond ASCII has an encoding of its own.
std::string escapeBehindHost(const std::string& url) {
  const std::size_t end = std::min(url.find_first_of("/?#", startOfHost(url)), url.size());
  std::string escaped = url.substr(0, end);
  for (const char character : std::string_view(url).substr(end)) {
    const auto byte = static_cast<unsigned char>(character);
    appendEscapedIf(byte <= 0x20 || byte >= 0x7f, byte, escaped);
  }
  return escaped;
}

std::string unescaped(const std::string& text) {
  int length = 0;
  const std::unique_ptr<char, CurlTextFree> plain(
      curl_easy_unescape(nullptr, text.data(), static_cast<int>(text.size()), &length));
  return plain ? std::string(plain.get(), static_cast<std::size_t>(length)) : text;
}

/// Null when libcurl does not take `url`; then its reason is in `*error`.
ParsedUrl parse(const std::string& url, CURLUcode* error) {
  ParsedUrl parsed(curl_url());
  *error =
      parsed ? curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), 0) : CURLUE_OUT_OF_MEMORY;
  if (*error != CURLUE_OK) return nullptr;
  // Port 0 is a port to libcurl.
  if (partOf(parsed.get(), CURLUPART_PORT) != "0") return parsed;
  *error = CURLUE_BAD_PORT_NUMBER;
  return nullptr;
}

// libcurl forgives a missing host: it takes the first name of the path instead.
bool isWeb(const std::string& url) {
  const std::size_t host = startOfHost(url);
  return host < url.size() && url[host] != '/';
}

/// An address without the end of its host: what stands in the place of a port may be a password.
std::string withoutPort(const std::string& url) {
  const std::size_t end = url.find_first_of("/?#", url.find("://") + 3);
  return url.substr(0, url.rfind(':', end) + 1) + "...";
}

}  // namespace

std::optional<Address> parseAddress(const std::string& urlUtf8) {
  if (!isWeb(urlUtf8) || std::any_of(urlUtf8.begin(), urlUtf8.end(), isControl)) {
    return std::nullopt;
  }
  Address address;
  address.fetched = escapeBehindHost(urlUtf8);
  CURLUcode error = CURLUE_OK;
  const ParsedUrl url = parse(address.fetched, &error);
  if (!url) return std::nullopt;
  address.host = partOf(url.get(), CURLUPART_HOST);
  for (const CURLUPart part : {CURLUPART_USER, CURLUPART_PASSWORD}) {
    address.hasCredentials = address.hasCredentials || !partOf(url.get(), part).empty();
  }
  for (const CURLUPart secret : {CURLUPART_USER, CURLUPART_PASSWORD, CURLUPART_FRAGMENT}) {
    curl_url_set(url.get(), secret, nullptr, 0);
  }
  address.remembered = partOf(url.get(), CURLUPART_URL, CURLU_NO_DEFAULT_PORT);
  curl_url_set(url.get(), CURLUPART_QUERY, nullptr, 0);
  address.place = partOf(url.get(), CURLUPART_URL, CURLU_NO_DEFAULT_PORT);
  return address;
}

std::string escapedBeyondAscii(const std::string& text) {
  std::string escaped;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    appendEscapedIf(byte > 0x7f, byte, escaped);
  }
  return escaped;
}

std::string fileNameOf(const Address& address) {
  return unescaped(address.place.substr(address.place.rfind('/') + 1));
}

SplitAddress splitCredentials(const std::string& url) {
  const std::size_t scheme = url.find("://");
  if (scheme == std::string::npos) return {url};
  const std::size_t begin = scheme + 3;
  const std::size_t end = std::min(url.find_first_of("/?#", begin), url.size());
  const std::size_t at = url.rfind('@', end);
  if (at == std::string::npos || at < begin || at >= end) return {url};
  const std::string named = url.substr(begin, at - begin);
  const std::size_t colon = std::min(named.find(':'), named.size());
  return {url.substr(0, begin) + url.substr(at + 1), unescaped(named.substr(0, colon)),
          unescaped(named.substr(std::min(colon + 1, named.size())))};
}

std::string withoutCredentials(const std::string& text) {
  const std::string bare = splitCredentials(text).address;
  const std::size_t at = bare.rfind('@');
  if (at != std::string::npos) return parseAddress(bare) ? bare : "..." + bare.substr(at);
  return faultOf(bare) == AddressFault::kBadPort ? withoutPort(bare) : bare;
}

AddressFault faultOf(const std::string& urlUtf8) {
  if (!isWeb(urlUtf8)) return AddressFault::kNotWeb;
  CURLUcode error = CURLUE_OK;
  parse(escapeBehindHost(urlUtf8), &error);
  if (error == CURLUE_BAD_PORT_NUMBER) return AddressFault::kBadPort;
  const bool isUnescaped = std::any_of(urlUtf8.begin(), urlUtf8.end(), [](unsigned char byte) {
    return byte == ' ' || isControl(byte);
  });
  if (isUnescaped) return AddressFault::kUnescaped;
  return error == CURLUE_OK ? AddressFault::kNone : AddressFault::kNotWeb;
}

std::string hostOf(const std::string& urlUtf8) {
  const std::optional<Address> address = parseAddress(urlUtf8);
  return address ? address->host : urlUtf8;
}

}  // namespace playerx
