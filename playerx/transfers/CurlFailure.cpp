#include "playerx/transfers/CurlFailure.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <regex>

namespace playerx {

namespace {

long numberOf(CURL* curl, CURLINFO info) {
  long number = 0;
  curl_easy_getinfo(curl, info, &number);
  return number;
}

TransferFailure connectFailure(long systemError) {
  switch (systemError) {
    case ECONNREFUSED:
      return TransferFailure::kRefused;
    case ETIMEDOUT:
      return TransferFailure::kTimeout;
    default:
      return TransferFailure::kNetwork;
  }
}

/// Whether one of the proxies of the environment is `host` at `port`.
bool isProxyOfEnvironment(const std::string& host, const std::string& port) {
  const auto names = [&](const char* variable) {
    const char* value = std::getenv(variable);
    if (value == nullptr) return false;
    std::string proxy = value;
    while (proxy.ends_with('/')) proxy.pop_back();
    const std::string place = host + ":" + port;
    return proxy == place || proxy.ends_with("/" + place) || proxy.ends_with("@" + place);
  };
  static constexpr const char* kVariables[] = {"http_proxy", "https_proxy", "HTTPS_PROXY",
                                               "all_proxy", "ALL_PROXY"};
  return std::any_of(std::begin(kVariables), std::end(kVariables), names);
}

}  // namespace

CurlEnd curlEndOf(CURL* curl, CURLcode code) {
  return {code, numberOf(curl, CURLINFO_REDIRECT_COUNT), numberOf(curl, CURLINFO_OS_ERRNO),
          numberOf(curl, CURLINFO_HTTP_CONNECTCODE)};
}

TransferFailure failureOf(const CurlEnd& end) {
  if (end.proxyStatus >= 300) return failureOfStatus(static_cast<int>(end.proxyStatus));
  const bool wasSentOn = end.redirects > 0;
  switch (end.code) {
    case CURLE_OK:
      return TransferFailure::kNone;
    case CURLE_COULDNT_RESOLVE_HOST:
      return TransferFailure::kNoSuchHost;
    case CURLE_COULDNT_RESOLVE_PROXY:
      return TransferFailure::kNoSuchProxy;
    case CURLE_COULDNT_CONNECT:
      return connectFailure(end.systemError);
    case CURLE_OPERATION_TIMEDOUT:
      return TransferFailure::kTimeout;
    case CURLE_INTERFACE_FAILED:
    case CURLE_PROXY:
      return TransferFailure::kNetwork;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
      return TransferFailure::kCertificate;
    case CURLE_SSL_CACERT_BADFILE:
      return TransferFailure::kTrustFile;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CLIENTCERT:  // the server asks for one
    case CURLE_USE_SSL_FAILED:
      return TransferFailure::kTls;
    case CURLE_TOO_MANY_REDIRECTS:
      return TransferFailure::kRedirectLoop;
    case CURLE_URL_MALFORMAT:
      return wasSentOn ? TransferFailure::kBadRedirect : TransferFailure::kUnsupportedAddress;
    case CURLE_UNSUPPORTED_PROTOCOL:
      // Also the library's word for an answer that does not begin as one.
      return wasSentOn ? TransferFailure::kBadRedirect : TransferFailure::kBadAnswer;
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
      return TransferFailure::kDropped;
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_WRITE_ERROR:
    case CURLE_OUT_OF_MEMORY:  // a header line without end
    case CURLE_BAD_CONTENT_ENCODING:
      return TransferFailure::kBadAnswer;
    default:
      return TransferFailure::kInternal;
  }
}

std::string wordsOf(CURLcode code, const char* errorBuffer) {
  // The library quotes the address of a proxy that it cannot use, with its user and password.
  static const std::regex kUser("'.*@");
  const std::string words = *errorBuffer != '\0' ? errorBuffer : curl_easy_strerror(code);
  return std::regex_replace(words, kUser, "'");
}

Peer peerOf(const std::string& words, const std::string& host) {
  static const std::regex kPlace(R"(Failed to connect to (\S+) port (\d+) )");
  std::smatch found;
  if (!std::regex_search(words, found, kPlace)) return {host, false};
  const std::string name = found[1];
  const std::string port = found[2];
  const bool isUsual = port == "80" || port == "443";
  return {isUsual ? name : name + ":" + port, isProxyOfEnvironment(name, port)};
}

}  // namespace playerx
