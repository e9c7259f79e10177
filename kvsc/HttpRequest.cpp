#include "kvsc/HttpRequest.h"

#include <algorithm>
#include <array>
#include <climits>
#include <memory>
#include <new>
#include <utility>

#include "kvsc/HttpTime.h"

namespace kvsc {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kForbiddenBytes{"\r\n\0", 3};

/// The values of the lines that both kinds of request have in common.
struct CommonLines {
  long ifModifiedSince;
  const std::string& responseType;
  const std::string& userAgent;
  const std::string& contentType;
  const std::string& charset;
};

std::string optionalLine(std::string_view name, const std::string& value) {
  return value.empty() ? std::string() : std::string(name).append(value).append(kLineEnd);
}

std::string contentTypeLine(const std::string& contentType, const std::string& charset) {
  if (contentType.empty()) return {};
  const std::string suffix = charset.empty() ? std::string() : ";charset=" + charset;
  return optionalLine("Content-Type: ", contentType + suffix);
}

std::string commonLines(const CommonLines& lines) {
  const std::string date =
      lines.ifModifiedSince > 0 ? formatHttpTime(lines.ifModifiedSince) : std::string();
  return optionalLine("If-Modified-Since: ", date) +
         optionalLine("responseType: ", lines.responseType) +
         optionalLine("User-Agent: ", lines.userAgent) +
         contentTypeLine(lines.contentType, lines.charset);
}

/// Joins three pieces in a new array; the middle one occupies `dataLength` bytes even when null.
unsigned char* join(std::string_view first, const unsigned char* data, int dataLength,
                    std::string_view second, int* outLength) {
  const auto reserved = static_cast<std::size_t>(std::max(dataLength, 0));
  const std::size_t length = first.size() + reserved + second.size();
  if (length > INT_MAX) throw std::bad_alloc();
  auto* request = new unsigned char[length]();
  unsigned char* end = std::copy(first.begin(), first.end(), request);
  if (data != nullptr) end = std::copy_n(data, reserved, end);
  std::copy(second.begin(), second.end(), end);
  *outLength = static_cast<int>(length);
  return request;
}

int lengthOf(const std::string& bytes) {
  if (bytes.size() > INT_MAX) throw std::bad_alloc();
  return static_cast<int>(bytes.size());
}

const unsigned char* bytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

/// Turns the array into a string and frees it.
std::string takeText(unsigned char* request, int length) {
  const std::unique_ptr<unsigned char[]> owner(request);
  return {reinterpret_cast<const char*>(request), static_cast<std::size_t>(length)};
}

bool isOneLine(std::string_view text) {
  return text.find_first_of(kForbiddenBytes) == std::string_view::npos;
}

/// Whether the text consists of lines separated by line ends, with no empty line, which would end
/// the header block early.
bool areHeaderLines(std::string_view text) {
  while (true) {
    const std::size_t end = text.find(kLineEnd);
    const std::string_view line = text.substr(0, end);
    if (line.empty() || !isOneLine(line)) return false;
    if (end == std::string_view::npos) return true;
    text.remove_prefix(end + kLineEnd.size());
  }
}

std::string lowerCased(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return text;
}

}  // namespace

int HttpRequest::parseUri(std::string uri, std::string* host, std::string* port, std::string* path,
                          bool* isHttps) {
  const std::size_t colon = uri.find(':');
  if (colon == std::string::npos) return -1;
  // Anywhere in the address, not only at its start: "ftp://host/http-file" is plain HTTP.
  const std::string lower = lowerCased(uri);
  const bool secure = lower.find("https") != std::string::npos;
  if (!secure && lower.find("http") == std::string::npos) return -1;
  *isHttps = secure;
  *port = secure ? "https" : "http";
  const std::size_t slashes = uri.find("//", colon);
  if (slashes == std::string::npos) return -1;

  const std::size_t hostStart = slashes + 2;
  const std::size_t pathStart = uri.find('/', hostStart);
  *host = uri.substr(hostStart, pathStart - hostStart);
  *path = pathStart == std::string::npos ? "/" : uri.substr(pathStart);
  const std::size_t portColon = host->find(':');
  if (portColon != std::string::npos && portColon > 0) {
    *port = host->substr(portColon + 1);
    host->resize(portColon);
  }
  return 0;
}

std::string HttpRequest::findForbidden(const Texts& texts) {
  const std::array<std::pair<const char*, std::string_view>, 8> lines = {{
      {"method", texts.method},
      {"host", texts.host},
      {"port", texts.port},
      {"path", texts.path},
      {"response type", texts.responseType},
      {"user agent", texts.userAgent},
      {"content type", texts.contentType},
      {"charset", texts.charset},
  }};
  for (const auto& [name, text] : lines) {
    if (!isOneLine(text)) {
      return std::string("Request refused: the ") + name + " holds a line end or a zero byte.";
    }
  }
  if (!texts.extraHeaders.empty() && !areHeaderLines(texts.extraHeaders)) {
    return "Request refused: the extra headers are not lines of text separated by line ends.";
  }
  return {};
}

unsigned char* HttpRequest::generateRequest(std::string method, std::string host, std::string path,
                                            int* outLength, long ifModifiedSince,
                                            std::string responseType, std::string userAgent,
                                            std::string contentType, std::string charset,
                                            const unsigned char* data, int dataLength,
                                            std::string extraHeaders) {
  const std::string second =
      " HTTP/1.0\r\nHost: " + host + "\r\n" +
      commonLines({ifModifiedSince, responseType, userAgent, contentType, charset}) +
      optionalLine("", extraHeaders) + "Connection: close\r\n\r\n";
  return join(method + " " + path, data, dataLength, second, outLength);
}

std::string HttpRequest::generateRequest(std::string method, std::string host, std::string path,
                                         std::string data, long ifModifiedSince,
                                         std::string responseType, std::string userAgent,
                                         std::string contentType, std::string charset) {
  int length = 0;
  unsigned char* request =
      generateRequest(std::move(method), std::move(host), std::move(path), &length, ifModifiedSince,
                      std::move(responseType), std::move(userAgent), std::move(contentType),
                      std::move(charset), bytesOf(data), lengthOf(data), std::string());
  return takeText(request, length);
}

unsigned char* HttpRequest::generatePostRequest(std::string host, std::string path, int* outLength,
                                                long ifModifiedSince, std::string responseType,
                                                std::string userAgent, std::string contentType,
                                                std::string charset, const unsigned char* body,
                                                int bodyLength, std::string extraHeaders) {
  const std::string contentLength = bodyLength > 0 ? std::to_string(bodyLength) : std::string();
  const std::string head =
      "POST " + path + " HTTP/1.0\r\nHost: " + host + "\r\n" +
      commonLines({ifModifiedSince, responseType, userAgent, contentType, charset}) +
      optionalLine("Content-Length: ", contentLength) + optionalLine("", extraHeaders) +
      "Connection: close\r\n\r\n";
  const bool hasBody = body != nullptr && bodyLength >= 1;
  return join(head, body, hasBody ? bodyLength : 0, hasBody ? kLineEnd : std::string_view(),
              outLength);
}

std::string HttpRequest::generatePostRequest(std::string host, std::string path, std::string body,
                                             long ifModifiedSince, std::string responseType,
                                             std::string userAgent, std::string contentType,
                                             std::string charset) {
  int length = 0;
  unsigned char* request =
      generatePostRequest(std::move(host), std::move(path), &length, ifModifiedSince,
                          std::move(responseType), std::move(userAgent), std::move(contentType),
                          std::move(charset), bytesOf(body), lengthOf(body), std::string());
  return takeText(request, length);
}

}  // namespace kvsc
