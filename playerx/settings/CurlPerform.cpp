#include "playerx/settings/CurlPerform.h"

#include <memory>

namespace playerx {

namespace {

constexpr int kLookMs = 20;

using CurlMulti = std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)>;

/// How the only request ended; it has none when it was given up or could not be performed.
CURLcode endOf(CURLM* multi, bool isGivenUp) {
  int left = 0;
  const CURLMsg* const message = curl_multi_info_read(multi, &left);
  if (message != nullptr) return message->data.result;
  return isGivenUp ? CURLE_ABORTED_BY_CALLBACK : CURLE_OUT_OF_MEMORY;
}

}  // namespace

CURLcode performUnless(const IsGivenUp& isGivenUp, CURL* curl) {
  const CurlMulti multi(curl_multi_init(), curl_multi_cleanup);
  if (multi == nullptr) return CURLE_OUT_OF_MEMORY;
  // A name that is being looked up is not waited for.
  curl_easy_setopt(curl, CURLOPT_QUICK_EXIT, 1L);
  curl_multi_add_handle(multi.get(), curl);
  int running = 1;
  while (!isGivenUp || !isGivenUp()) {
    if (curl_multi_perform(multi.get(), &running) != CURLM_OK || running == 0) break;
    curl_multi_poll(multi.get(), nullptr, 0, kLookMs, nullptr);
  }
  const CURLcode code = endOf(multi.get(), isGivenUp && isGivenUp());
  curl_multi_remove_handle(multi.get(), curl);
  return code;
}

}  // namespace playerx
