// The operations of HttpUtilityVirtual that look at text alone.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <new>
#include <string_view>

#include "kvsc/HttpUtilityVirtual.h"

namespace kvsc {
namespace {

constexpr std::string_view kHtmlStart = "<!DOCTYPE HTML";
constexpr std::string_view kUnescapedMarks = "-_.!~()";
constexpr std::string_view kHexDigits = "0123456789ABCDEF";

bool isUnescaped(unsigned char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') ||
         kUnescapedMarks.find(static_cast<char>(byte)) != std::string_view::npos;
}

/// Writes the escaped bytes to `out` and returns where the next one goes.
template <class Output>
Output escape(const unsigned char* data, std::size_t length, Output out) {
  for (const unsigned char* byte = data; byte != data + length; ++byte) {
    if (isUnescaped(*byte)) {
      *out++ = static_cast<char>(*byte);
    } else {
      *out++ = '%';
      *out++ = kHexDigits[*byte >> 4];
      *out++ = kHexDigits[*byte & 15];
    }
  }
  return out;
}

bool isOneOf(std::initializer_list<unsigned int> ports, unsigned int port) {
  return std::find(ports.begin(), ports.end(), port) != ports.end();
}

bool beginsLikeHtml(const unsigned char* data, int length) {
  return length >= static_cast<int>(kHtmlStart.size()) &&
         std::equal(kHtmlStart.begin(), kHtmlStart.end(), data);
}

}  // namespace

bool HttpUtilityVirtual::processServerResponse(const unsigned char* data, int* length,
                                               bool checkHtml, bool* ok, HttpErrorIds* error,
                                               std::string& message) {
  message.clear();
  stripCarriageReturnLineFeed(data, length);
  if (!checkHtml) {
    message = parseResponse(data, *length);
  } else if (beginsLikeHtml(data, *length)) {
    if (error != nullptr) *error = HTTP_ERROR_FAILED;
    message = "Server returned HTML";
  }
  const bool isOk = message.empty();
  if (ok != nullptr) *ok = isOk;
  return isOk;
}

bool HttpUtilityVirtual::processServerResponse(std::string response, bool checkHtml, bool* ok,
                                               HttpErrorIds* error, std::string& message) {
  int length =
      static_cast<int>(std::min<std::size_t>(response.size(), std::numeric_limits<int>::max()));
  return processServerResponse(reinterpret_cast<const unsigned char*>(response.data()), &length,
                               checkHtml, ok, error, message);
}

unsigned char* HttpUtilityVirtual::urlEncode(const unsigned char* data, int length,
                                             int* outLength) {
  *outLength = 0;
  if (data == nullptr || length < 1 || length > std::numeric_limits<int>::max() / 3) return nullptr;
  const auto size = static_cast<std::size_t>(length);
  auto* encoded = new (std::nothrow) unsigned char[3 * size];
  if (encoded != nullptr) *outLength = static_cast<int>(escape(data, size, encoded) - encoded);
  return encoded;
}

std::string HttpUtilityVirtual::urlEncode(const std::string& text) {
  std::string encoded;
  encoded.reserve(text.size());
  escape(reinterpret_cast<const unsigned char*>(text.data()), text.size(),
         std::back_inserter(encoded));
  return encoded;
}

std::string HttpUtilityVirtual::generateUrl(std::string host, unsigned int port, std::string path) {
  const std::string scheme = isOneOf({443, 7002, 8443}, port) ? "https://" : "http://";
  const std::string portText =
      isOneOf({7001, 7002, 8080, 8443}, port) ? std::string(":").append(std::to_string(port)) : "";
  return scheme + host + portText + path;
}

std::string HttpUtilityVirtual::replaceCharactersWithHtmlKeyWords(std::string text) {
  std::string replaced;
  replaced.reserve(text.size());
  for (const char character : text) {
    if (character == '&') {
      replaced += "&amp;";
    } else if (character == '\'') {
      replaced += "&apos;";
    } else {
      replaced += character;
    }
  }
  return replaced;
}

void HttpUtilityVirtual::stripCarriageReturnLineFeed(const unsigned char* data, int* length) {
  if (*length <= 2 || data[*length - 1] != '\n') return;
  *length -= data[*length - 2] == '\r' ? 2 : 1;
}

void HttpUtilityVirtual::stripCarriageReturnLineFeed(std::string& text) {
  if (text.size() <= 2 || text.back() != '\n') return;
  text.pop_back();
  if (text.back() == '\r') text.pop_back();
}

}  // namespace kvsc
