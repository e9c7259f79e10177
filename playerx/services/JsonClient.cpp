#include "playerx/services/JsonClient.h"

#include <curl/curl.h>

#include <memory>
#include <utility>

#include "playerx/settings/CurlTrust.h"

namespace playerx {

namespace {

using CurlHandle = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;
using CurlHeaders = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;

std::string withoutSlash(std::string address) {
  while (!address.empty() && address.back() == '/') address.pop_back();
  return address;
}

std::size_t collect(char* data, std::size_t size, std::size_t count, void* body) {
  auto& text = *static_cast<std::string*>(body);
  if (text.size() + size * count > JsonClient::kMaxAnswer) return 0;
  text.append(data, size * count);
  return size * count;
}

void setUp(CURL* curl, const std::string& url, const TrustedAuthorities& authorities) {
  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, JsonClient::kConnectSeconds);
  curl_easy_setopt(curl, CURLOPT_TIMEOUT, JsonClient::kWholeSeconds);
  applyTrust(curl, authorities);
}

/// Whether the exchange ended in this way because of what came back, not because nothing did.
bool isNonsense(CURLcode code) {
  switch (code) {
    case CURLE_UNSUPPORTED_PROTOCOL:  // an answer that does not begin as one
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_WRITE_ERROR:    // a body beyond the limit
    case CURLE_OUT_OF_MEMORY:  // a header without end
      return true;
    default:
      return false;
  }
}

std::string problemOf(CURL* curl, CURLcode code, long status) {
  long connections = 0;
  curl_easy_getinfo(curl, CURLINFO_NUM_CONNECTS, &connections);
  if (code == CURLE_OK) {
    return "The online services answered with status " + std::to_string(status) + ".";
  }
  if (code == CURLE_ABORTED_BY_CALLBACK) {
    return "The player ended before the online services answered; try again.";
  }
  if (connections > 0 && isNonsense(code)) return kNoProperAnswer;
  if (code == CURLE_UNSUPPORTED_PROTOCOL || code == CURLE_URL_MALFORMAT) {
    return "The address of the online services (--services) does not begin with http:// or "
           "https://.";
  }
  return std::string("The online services cannot be reached (") + curl_easy_strerror(code) +
         "); check their address (--services), or try again later.";
}

}  // namespace

JsonClient::JsonClient(std::string address, TrustedAuthorities authorities)
    : address_(withoutSlash(std::move(address))), authorities_(std::move(authorities)) {}

JsonReply JsonClient::get(const std::string& path, const IsGivenUp& isGivenUp) const {
  return exchange(path, nullptr, isGivenUp);
}

JsonReply JsonClient::post(const std::string& path, const std::string& json,
                           const IsGivenUp& isGivenUp) const {
  return exchange(path, &json, isGivenUp);
}

JsonReply JsonClient::exchange(const std::string& path, const std::string* json,
                               const IsGivenUp& isGivenUp) const {
  JsonReply reply;
  const CurlHandle curl(curl_easy_init(), curl_easy_cleanup);
  const CurlHeaders headers(curl_slist_append(nullptr, "Content-Type: application/json"),
                            curl_slist_free_all);
  if (curl == nullptr || headers == nullptr) {
    reply.problem = "There is too little memory to ask the online services.";
    return reply;
  }
  setUp(curl.get(), address_ + path, authorities_);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, collect);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &reply.body);
  if (json != nullptr) {
    curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDSIZE_LARGE,
                     static_cast<curl_off_t>(json->size()));
    curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDS, json->data());
  }
  const CURLcode code = performUnless(isGivenUp, curl.get());
  long status = 0;
  curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &status);
  reply.ok = code == CURLE_OK && status >= 200 && status < 300;
  if (!reply.ok) reply.problem = problemOf(curl.get(), code, status);
  return reply;
}

}  // namespace playerx
