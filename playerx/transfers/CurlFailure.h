#pragma once

#include <curl/curl.h>

#include "playerx/transfers/TransferFailure.h"

namespace playerx {

/// How libcurl ended a request for an http or https address. A record; the numbers are its own.
struct CurlEnd {
  CURLcode code = CURLE_OK;
  long redirects = 0;    ///< followed
  long systemError = 0;  ///< errno of the connection that could not be made; 0 when not known
  long proxyStatus = 0;  ///< what the proxy answered to the wish for a tunnel; 0 without one
};

/// Reads it off a handle that has been performed.
CurlEnd curlEndOf(CURL* curl, CURLcode code);

/// The failure that this end stands for; kNone for an answer that came to its proper end, whatever
/// its status.
TransferFailure failureOf(const CurlEnd& end);

}  // namespace playerx
