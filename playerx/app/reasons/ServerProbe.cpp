#include "playerx/app/reasons/ServerProbe.h"

#include <curl/curl.h>
#include <strings.h>

#include <array>
#include <memory>
#include <string_view>
#include <utility>

#include "playerx/app/reasons/Proxy.h"
#include "playerx/app/reasons/TransferReason.h"
#include "playerx/settings/CurlPerform.h"
#include "playerx/settings/CurlTrust.h"

namespace playerx::reasons {

namespace {

constexpr long kConnectSeconds = 10;
constexpr long kWholeSeconds = 20;
constexpr long kMaxRedirects = 10;

using CurlHandle = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;

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

std::string textOf(CURL* curl, CURLINFO info) {
  const char* text = nullptr;
  curl_easy_getinfo(curl, info, &text);
  return text == nullptr ? "" : text;
}

/// Where the answers come from. Redirects to what is not the web are refused without an answer.
struct Sender {
  CURL* curl;
  std::string& address;
};

std::size_t noteSender(char*, std::size_t, std::size_t length, void* context) {
  const auto& sender = *static_cast<Sender*>(context);
  sender.address = textOf(sender.curl, CURLINFO_EFFECTIVE_URL);
  return length;
}

bool isWebPage(const std::string& type) {
  constexpr std::string_view kPage = "text/html";
  return strncasecmp(type.c_str(), kPage.data(), kPage.size()) == 0;
}

ProbeResult probeServer(const std::string& address, const TrustedAuthorities& authorities,
                        std::stop_token stop) {
  ProbeResult result{.address = address, .end = {}, .words = {}};
  const CurlHandle curl(curl_easy_init(), curl_easy_cleanup);
  if (curl == nullptr || !parseAddress(address)) {
    result.end.code = curl == nullptr ? CURLE_FAILED_INIT : CURLE_URL_MALFORMAT;
    return result;
  }
  std::array<char, CURL_ERROR_SIZE> words{};
  setUp(curl.get(), address, authorities);
  curl_easy_setopt(curl.get(), CURLOPT_ERRORBUFFER, words.data());
  Sender sender{curl.get(), result.last};
  curl_easy_setopt(curl.get(), CURLOPT_HEADERFUNCTION, noteSender);
  curl_easy_setopt(curl.get(), CURLOPT_HEADERDATA, &sender);

  const auto isGivenUp = [&stop] { return stop.stop_requested(); };
  result.end = curlEndOf(curl.get(), performUnless(isGivenUp, curl.get()));
  result.words = wordsOf(result.end.code, words.data());
  curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &result.status);
  curl_off_t length = -1;
  curl_easy_getinfo(curl.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
  result.length = length;
  result.type = textOf(curl.get(), CURLINFO_CONTENT_TYPE);
  const std::string asked = textOf(curl.get(), CURLINFO_EFFECTIVE_URL);
  if (parseAddress(asked)) result.last = asked;
  return result;
}

}  // namespace

Probe serverProbe(TrustedAuthorities authorities) {
  return [authorities = std::move(authorities)](const std::string& address, std::stop_token stop) {
    return probeServer(address, authorities, std::move(stop));
  };
}

std::optional<Explanation> explainProbe(const ProbeResult& probe) {
  TransferReport report;
  report.failure = failureOf(probe.end);
  // A single request that broke off does not show that the line breaks again and again.
  if (report.failure == TransferFailure::kDropped) report.failure = TransferFailure::kBadAnswer;
  report.detail = probe.words;
  // A redirect may have led to another server, which is the one to name.
  const std::string& address = probe.last.empty() ? probe.address : probe.last;
  const std::string host = hostOf(address);
  if (report.failure != TransferFailure::kNone) return explainTransfer(report, address);
  if (probe.status == 407) return explainProxyLogin(address);
  if (probe.status == 401) return explain(Reason::kLoginForSize, {.host = host});
  if (probe.status >= 300) return explain(reasonOfStatus(probe.status), {.host = host});
  if (isWebPage(probe.type)) return explain(reasonOf(TransferFailure::kWebPage), {.host = host});
  if (probe.length == 0) return explain(Reason::kEmptyFile, {.host = host});
  if (probe.length < 0) return explain(Reason::kNoLength, {.host = host});
  return std::nullopt;
}

}  // namespace playerx::reasons
