#pragma once

#include <curl/curl.h>

#include <functional>

namespace playerx {

/// Whether to stop waiting for an answer. Empty: never.
using IsGivenUp = std::function<bool()>;

/// Performs a request as `curl_easy_perform` does, and returns CURLE_ABORTED_BY_CALLBACK once
/// `isGivenUp` is true. That is asked about fifty times a second, on the calling thread; libcurl's
/// own callback is called once a second while nothing arrives.
CURLcode performUnless(const IsGivenUp& isGivenUp, CURL* curl);

}  // namespace playerx
