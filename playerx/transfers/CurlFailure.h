#pragma once

#include <curl/curl.h>

#include <string>

#include "playerx/transfers/TransferFailure.h"

namespace playerx {

/// How libcurl ended a request for an http or https address. A record; the numbers are its own.
struct CurlEnd {
  CURLcode code = CURLE_OK;
  long redirects = 0;    ///< followed
  long systemError = 0;  ///< errno of the connection that could not be made; 0 when not known
  long proxyStatus = 0;  ///< what the proxy answered to the request for a tunnel; 0 without one
};

/// Reads it off a handle that has been performed.
CurlEnd curlEndOf(CURL* curl, CURLcode code);

/// The failure that this end stands for; kNone for an answer that came to its proper end, whatever
/// its status.
TransferFailure failureOf(const CurlEnd& end);

/// libcurl's words for this end: those in `errorBuffer` (CURLOPT_ERRORBUFFER), or else its words
/// for the code.
std::string wordsOf(CURLcode code, const char* errorBuffer);

/// Whom a request tried to connect to: the server, one it was sent on to, or a proxy.
struct Peer {
  std::string name;  ///< host, and port where it is not the usual one: "films.test:8080"
  bool isProxy = false;
};

/// The peer that libcurl's words name, else the server of `host`. A proxy is known by the
/// environment (http_proxy, https_proxy, all_proxy).
Peer peerOf(const std::string& words, const std::string& host);

}  // namespace playerx
