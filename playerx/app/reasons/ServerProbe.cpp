#include "playerx/app/reasons/ServerProbe.h"

#include <curl/curl.h>

#include <array>
#include <memory>

#include "playerx/app/reasons/HostName.h"
#include "playerx/settings/CurlTrust.h"

namespace playerx {

namespace {

constexpr long kConnectSeconds = 10;
constexpr long kWholeSeconds = 20;
constexpr long kMaxRedirects = 10;

using CurlHandle = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;

int progress(void* stop, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  return static_cast<std::stop_token*>(stop)->stop_requested() ? 1 : 0;
}

void setUp(CURL* curl, const std::string& url, const TrustedAuthorities& authorities) {
  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl, CURLOPT_NOBODY, 1L);
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(curl, CURLOPT_MAXREDIRS, kMaxRedirects);
  curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(curl, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
  curl_easy_setopt(curl, CURLOPT_TIMEOUT, kWholeSeconds);
  applyTrust(curl, authorities);
}

}  // namespace

ProbeResult probeServer(const std::string& url, const TrustedAuthorities& authorities,
                        std::stop_token stop) {
  ProbeResult result;
  result.host = hostOf(url);
  const CurlHandle curl(curl_easy_init(), curl_easy_cleanup);
  if (curl == nullptr) {
    result.end.code = CURLE_FAILED_INIT;
    return result;
  }
  std::array<char, CURL_ERROR_SIZE> words{};
  setUp(curl.get(), url, authorities);
  curl_easy_setopt(curl.get(), CURLOPT_ERRORBUFFER, words.data());
  curl_easy_setopt(curl.get(), CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(curl.get(), CURLOPT_XFERINFOFUNCTION, progress);
  curl_easy_setopt(curl.get(), CURLOPT_XFERINFODATA, &stop);

  result.end = curlEndOf(curl.get(), curl_easy_perform(curl.get()));
  result.detail = words[0] != '\0' ? words.data() : curl_easy_strerror(result.end.code);
  curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &result.status);
  curl_off_t length = -1;
  curl_easy_getinfo(curl.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
  result.length = length;
  return result;
}

}  // namespace playerx
