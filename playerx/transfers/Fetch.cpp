#include "playerx/transfers/Fetch.h"

#include <algorithm>

#include "playerx/platform/Text.h"
#include "playerx/settings/CurlTrust.h"
#include "playerx/transfers/CurlFailure.h"
#include "playerx/transfers/OwnHeaders.h"

namespace playerx::transfers {
namespace {

constexpr long kReceiveBuffer = 512L << 10;
constexpr long kMostRedirects = 10;
constexpr char kProtocols[] = "http,https";
constexpr char kUserAgent[] = "VeskPlayerX/1.0";

std::size_t passHeaderLine(char* data, std::size_t size, std::size_t count, void* sink) {
  const std::size_t length = size * count;
  return static_cast<FetchSink*>(sink)->onHeaderLine({data, length}) ? length
                                                                     : CURL_WRITEFUNC_ERROR;
}

}  // namespace

Fetch::Fetch(const FetchSpec& spec, FetchSink& sink) : sink_(sink), handle_(curl_easy_init()) {
  CURL* const handle = handle_.get();
  curl_easy_setopt(handle, CURLOPT_URL, spec.url.c_str());
  curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, error_);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &passBody);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
  curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, &passHeaderLine);
  curl_easy_setopt(handle, CURLOPT_HEADERDATA, &sink);
  curl_easy_setopt(handle, CURLOPT_BUFFERSIZE, kReceiveBuffer);
  curl_easy_setopt(handle, CURLOPT_USERAGENT, kUserAgent);
  curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT_MS,
                   static_cast<long>(spec.connectTimeout.count()));
  curl_easy_setopt(handle, CURLOPT_FRESH_CONNECT, spec.freshConnection ? 1L : 0L);
  setSafety();
  applyTrust(handle, spec.trust);
  setCredentials(spec.options);
  addHeader("Accept-Encoding: identity");
  setRange(spec.range);
  setOptions(spec.options);
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
void Fetch::setCredentials(const FilmOptions& options) {
  CURL* const handle = handle_.get();
  curl_easy_setopt(handle, CURLOPT_HTTPAUTH, CURLAUTH_BASIC | CURLAUTH_DIGEST);
  curl_easy_setopt(handle, CURLOPT_UNRESTRICTED_AUTH, 0L);
  if (options.username.empty() && options.password.empty()) return;
  curl_easy_setopt(handle, CURLOPT_USERNAME, options.username.c_str());
  curl_easy_setopt(handle, CURLOPT_PASSWORD, options.password.c_str());
}

void Fetch::setRange(const RangeRequest& range) {
  if (!range.isRanged()) return;
  const std::string text = std::to_string(range.start) + "-";
  curl_easy_setopt(handle_.get(), CURLOPT_RANGE, text.c_str());
  if (!range.ifRange.empty()) addHeader("If-Range: " + range.ifRange);
}

void Fetch::setOptions(const FilmOptions& options) {
  CURL* const handle = handle_.get();
  for (const std::string& line : options.headers) {
    const bool isOwn = isOwnHeader(line.substr(0, line.find(':')));
    if (!isOwn && std::none_of(line.begin(), line.end(), isControl)) addHeader(line);
  }
  if (!options.referer.empty()) {
    curl_easy_setopt(handle, CURLOPT_REFERER, options.referer.c_str());
  }
  if (!options.netrcFile.empty()) {
    curl_easy_setopt(handle, CURLOPT_NETRC, CURL_NETRC_OPTIONAL);
    curl_easy_setopt(handle, CURLOPT_NETRC_FILE, options.netrcFile.c_str());
  }
  if (!options.cookieFile.empty()) {
    curl_easy_setopt(handle, CURLOPT_COOKIEFILE, options.cookieFile.c_str());
    curl_easy_setopt(handle, CURLOPT_COOKIEJAR, options.cookieFile.c_str());
  }
}

CURLcode Fetch::goOn() {
  isKeptBack_ = false;
  return curl_easy_pause(handle_.get(), CURLPAUSE_CONT);
}

std::size_t Fetch::passBody(char* data, std::size_t size, std::size_t count, void* fetch) {
  return static_cast<Fetch*>(fetch)->takeBody(data, size * count);
}

// libcurl's own limit of the rate lets as much through at once as its buffer holds, and cannot be
// shared by several requests.
std::size_t Fetch::takeBody(const char* data, std::size_t length) {
  const auto now = RateLimit::Clock::now();
  isKeptBack_ = limit_ != nullptr && !limit_->isOpen(now);
  if (isKeptBack_) return CURL_WRITEFUNC_PAUSE;
  if (limit_ != nullptr) limit_->take(length, now);
  return sink_.onBody(data, length) ? length : CURL_WRITEFUNC_ERROR;
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
