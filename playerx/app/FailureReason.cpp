#include "playerx/app/FailureReason.h"

#include <curl/curl.h>

namespace playerx {

namespace {

/// Whether the library did not like where it was sent, rather than what it was asked.
bool isBadRedirect(const ProbeResult& probe) {
  const bool isOfAddress =
      probe.curlCode == CURLE_UNSUPPORTED_PROTOCOL || probe.curlCode == CURLE_URL_MALFORMAT;
  return isOfAddress && probe.redirects > 0;
}

FailureReason reasonFromCurl(const ProbeResult& probe) {
  const std::string& host = probe.host;
  if (isBadRedirect(probe)) return badRedirect(host);
  switch (probe.curlCode) {
    case CURLE_URL_MALFORMAT:
      return {"unsupported_url",
              "The address cannot be used; give one that begins with http:// or "
              "https://."};
    case CURLE_COULDNT_RESOLVE_HOST:
      return {"no_such_host",
              "There is no host named " + host + "; check the address and the network connection."};
    case CURLE_COULDNT_RESOLVE_PROXY:
      return {"no_such_proxy", "The proxy's host name cannot be found; check the proxy settings."};
    case CURLE_COULDNT_CONNECT:
      return {"refused", host + " does not accept connections; try again when the server is up."};
    case CURLE_OPERATION_TIMEDOUT:
      return {"timeout", host + " did not answer in time; try again later."};
    case CURLE_TOO_MANY_REDIRECTS:
      return {"redirect_loop", host +
                                   " sends the player round in circles; ask the provider for "
                                   "another address."};
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_CRL_BADFILE:
      return {"certificate", "The certificate of " + host +
                                 " cannot be trusted; if the server is your own, name its "
                                 "certificate authority with --cacert."};
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
      return {"tls", "No secure connection to " + host +
                         " could be made; the server may be too "
                         "old or ask for a certificate."};
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_PARTIAL_FILE:
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_UNSUPPORTED_PROTOCOL:  // the address asked is http or https, so the answer is not
    case CURLE_OUT_OF_MEMORY:         // a header without end
      return badAnswer(host);
    default:
      return {"network",
              host + " could not be asked (" +
                  (probe.detail.empty() ? curl_easy_strerror(static_cast<CURLcode>(probe.curlCode))
                                        : probe.detail) +
                  "); try again later."};
  }
}

}  // namespace

FailureReason badAnswer(const std::string& host) {
  return {"bad_answer", host + " gave no proper answer; try again later."};
}

FailureReason badRedirect(const std::string& host) {
  return {"bad_redirect", host + " sends the player on to where no film is; ask the provider."};
}

FailureReason reasonFromStatus(long status, const std::string& host) {
  const std::string number = std::to_string(status);
  switch (status) {
    case 401:
    case 407:
      return {"http_" + number, host + " wants a user name and password (" + number +
                                    "), which this address does not carry."};
    case 403:
      return {"http_403",
              host + " does not allow this film to be fetched (403); ask the provider."};
    case 404:
      return {"http_404", host + " has no film at this address (404); check the address."};
    case 410:
      return {"http_410",
              host + " no longer has this film (410); ask the provider for a new address."};
    case 429:
      return {"http_429", host + " is asked too often (429); try again later."};
    default:
      break;
  }
  if (status >= 500) {
    return {"http_" + number, host + " has trouble of its own (" + number + "); try again later."};
  }
  return {"http_" + number, host + " refused the film (" + number + ")."};
}

std::optional<FailureReason> reasonFromProbe(const ProbeResult& probe) {
  if (probe.curlCode != CURLE_OK) return reasonFromCurl(probe);
  if (probe.status >= 400) return reasonFromStatus(probe.status, probe.host);
  if (probe.length == 0) {
    return FailureReason{"empty_file",
                         "The film at " + probe.host + " is empty (0 bytes); ask the provider."};
  }
  if (probe.length < 0) {
    return FailureReason{"no_length", probe.host +
                                          " does not say how long the film is, so it cannot be "
                                          "downloaded; ask the provider for a direct address."};
  }
  return std::nullopt;
}

FailureReason noSpaceAt(const std::string& path) {
  return {"no_space", "There is too little free space at " + path +
                          "; free some there, or choose other folders with --media (films) and "
                          "--data (unfinished ones), then retry."};
}

FailureReason notAuthorized(int errorCode, const std::string& details) {
  return {"not_authorized", "The online services do not allow this download (error " +
                                std::to_string(errorCode) +
                                (details.empty() ? "" : ": " + details) + ")."};
}

FailureReason servicesUnavailable() {
  return {"services_unavailable",
          "The online services, which this protected film needs, cannot be reached; check their "
          "address (--services) and retry."};
}

FailureReason unexplained() {
  return {"unknown", "The download failed although the server answers now; retry it."};
}

}  // namespace playerx
