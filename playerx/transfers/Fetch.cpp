#include "playerx/transfers/Fetch.h"

#include <cerrno>

#include "playerx/settings/CurlTrust.h"

namespace playerx::transfers {
namespace {

constexpr long kBufferSize = 512L << 10;
constexpr long kMostRedirects = 10;
constexpr char kProtocols[] = "http,https";
constexpr char kUserAgent[] = "VeskPlayerX/1.0";

std::size_t passBody(char* data, std::size_t size, std::size_t count, void* sink) {
  const std::size_t length = size * count;
  return static_cast<FetchSink*>(sink)->onBody(data, length) ? length : CURL_WRITEFUNC_ERROR;
}

std::size_t passHeaderLine(char* data, std::size_t size, std::size_t count, void* sink) {
  const std::size_t length = size * count;
  return static_cast<FetchSink*>(sink)->onHeaderLine({data, length}) ? length
                                                                     : CURL_WRITEFUNC_ERROR;
}

}  // namespace

Fetch::Fetch(const FetchSpec& spec, FetchSink& sink) : handle_(curl_easy_init()) {
  CURL* const handle = handle_.get();
  curl_easy_setopt(handle, CURLOPT_URL, spec.url.c_str());
  curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, error_);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &passBody);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, &sink);
  curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, &passHeaderLine);
  curl_easy_setopt(handle, CURLOPT_HEADERDATA, &sink);
  curl_easy_setopt(handle, CURLOPT_BUFFERSIZE, kBufferSize);
  curl_easy_setopt(handle, CURLOPT_USERAGENT, kUserAgent);
  curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT_MS,
                   static_cast<long>(spec.connectTimeout.count()));
  curl_easy_setopt(handle, CURLOPT_FRESH_CONNECT, spec.freshConnection ? 1L : 0L);
  setSafety();
  applyTrust(handle, spec.trust);
  setCredentials(spec);
  addHeader("Accept-Encoding: identity");
  setRange(spec.range);
  curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers_.get());
}

void Fetch::setSafety() {
  CURL* const handle = handle_.get();
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  // A name server that does not answer must not hold up the end of a session.
  curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);
  curl_easy_setopt(handle, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(handle, CURLOPT_MAXREDIRS, kMostRedirects);
  curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, kProtocols);
  curl_easy_setopt(handle, CURLOPT_REDIR_PROTOCOLS_STR, kProtocols);
  curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_2TLS);
  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 1L);
  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 2L);
  curl_easy_setopt(handle, CURLOPT_SSLVERSION, CURL_SSLVERSION_TLSv1_2);
}

// The password leaves only when the server asks for it, and in the form that the server asks for:
// one more exchange is nothing beside a film.
void Fetch::setCredentials(const FetchSpec& spec) {
  CURL* const handle = handle_.get();
  curl_easy_setopt(handle, CURLOPT_HTTPAUTH, CURLAUTH_BASIC | CURLAUTH_DIGEST);
  curl_easy_setopt(handle, CURLOPT_UNRESTRICTED_AUTH, 0L);
  if (spec.username.empty() && spec.password.empty()) return;
  curl_easy_setopt(handle, CURLOPT_USERNAME, spec.username.c_str());
  curl_easy_setopt(handle, CURLOPT_PASSWORD, spec.password.c_str());
}

void Fetch::setRange(const RangeRequest& range) {
  if (!range.isRanged()) return;
  const std::string text = std::to_string(range.start) + "-";
  curl_easy_setopt(handle_.get(), CURLOPT_RANGE, text.c_str());
  if (!range.ifRange.empty()) addHeader("If-Range: " + range.ifRange);
}

void Fetch::addHeader(const std::string& line) {
  curl_slist* const longer = curl_slist_append(headers_.get(), line.c_str());
  if (longer == nullptr) return;
  static_cast<void>(headers_.release());
  headers_.reset(longer);
}

long Fetch::numberOf(CURLINFO info) const {
  long number = 0;
  curl_easy_getinfo(handle_.get(), info, &number);
  return number;
}

TransferFailure Fetch::connectFailure() const {
  switch (numberOf(CURLINFO_OS_ERRNO)) {
    case ECONNREFUSED:
      return TransferFailure::kRefused;
    case ETIMEDOUT:
      return TransferFailure::kTimeout;
    default:
      return TransferFailure::kNetwork;
  }
}

TransferFailure Fetch::failureOf(CURLcode code) const {
  const long fromProxy = numberOf(CURLINFO_HTTP_CONNECTCODE);
  if (fromProxy >= 300) return failureOfStatus(static_cast<int>(fromProxy));
  switch (code) {
    case CURLE_OK:
      return TransferFailure::kNone;
    case CURLE_COULDNT_RESOLVE_HOST:
      return TransferFailure::kNoSuchHost;
    case CURLE_COULDNT_RESOLVE_PROXY:
      return TransferFailure::kNoSuchProxy;
    case CURLE_COULDNT_CONNECT:
      return connectFailure();
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
    case CURLE_SSL_CIPHER:
    case CURLE_USE_SSL_FAILED:
      return TransferFailure::kTls;
    case CURLE_TOO_MANY_REDIRECTS:
      return TransferFailure::kRedirectLoop;
    case CURLE_URL_MALFORMAT:
      return TransferFailure::kBadRedirect;
    case CURLE_UNSUPPORTED_PROTOCOL:
      // Also the library's word for an answer that does not begin as one.
      return numberOf(CURLINFO_REDIRECT_COUNT) > 0 ? TransferFailure::kBadRedirect
                                                   : TransferFailure::kBadAnswer;
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
      return TransferFailure::kDropped;
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_WRITE_ERROR:
      return TransferFailure::kBadAnswer;
    default:
      return TransferFailure::kInternal;
  }
}

FetchOutcome Fetch::outcomeOf(CURLcode code) const {
  const TransferFailure failure = failureOf(code);
  if (failure == TransferFailure::kNone) return {};
  return {failure, error_[0] != '\0' ? error_ : curl_easy_strerror(code)};
}

}  // namespace playerx::transfers
