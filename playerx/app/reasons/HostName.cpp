#include "playerx/app/reasons/HostName.h"

#include <curl/curl.h>

#include <memory>

namespace playerx {

std::string hostOf(const std::string& url) {
  std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> parts(curl_url(), curl_url_cleanup);
  if (curl_url_set(parts.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK) return url;
  char* host = nullptr;
  if (curl_url_get(parts.get(), CURLUPART_HOST, &host, 0) != CURLUE_OK) return url;
  const std::unique_ptr<char, decltype(&curl_free)> owned(host, curl_free);
  return host;
}

}  // namespace playerx
