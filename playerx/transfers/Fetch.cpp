#include "playerx/transfers/Fetch.h"

#include "playerx/settings/CurlTrust.h"
#include "playerx/transfers/CurlFailure.h"

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

FetchOutcome Fetch::outcomeOf(CURLcode code) const {
  const TransferFailure failure = failureOf(curlEndOf(handle_.get(), code));
  if (failure == TransferFailure::kNone) return {};
  return {failure, wordsOf(code, error_)};
}

}  // namespace playerx::transfers
