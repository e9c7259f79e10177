// Input: the texts of a request in the order of `HttpRequest::Texts`, then the data. A request that
// is not refused has exactly the lines that its arguments ask for.
#include <memory>
#include <vector>

#include "kvsc/HttpRequest.h"
#include "tests/fuzz/Fuzz.h"

namespace {

using kvsc::HttpRequest;

struct Arguments {
  explicit Arguments(fuzz::Fields fields)
      : method(fields.next()),
        host(fields.next()),
        port(fields.next()),
        path(fields.next()),
        responseType(fields.next()),
        userAgent(fields.next()),
        contentType(fields.next()),
        charset(fields.next()),
        extraHeaders(fields.next()),
        data(fields.rest()) {}

  HttpRequest::Texts texts() const {
    return {method, host, port, path, responseType, userAgent, contentType, charset, extraHeaders};
  }

  std::string method, host, port, path, responseType, userAgent, contentType, charset, extraHeaders;
  std::string data;
};

std::size_t count(const std::string& text, const std::string& part) {
  std::size_t found = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++found;
  }
  return found;
}

/// Request line, host, connection, and what is given of the rest.
std::size_t linesAskedFor(const Arguments& arguments) {
  return 3 + (arguments.responseType.empty() ? 0 : 1) + (arguments.userAgent.empty() ? 0 : 1) +
         (arguments.contentType.empty() ? 0 : 1) +
         (arguments.extraHeaders.empty() ? 0 : 1 + count(arguments.extraHeaders, "\r\n"));
}

/// `head` reaches from the request's first byte to the end of its header block.
void requireLines(const std::string& head, std::size_t lines) {
  fuzz::require(head.size() > 4 && head.find("\r\n\r\n") == head.size() - 4,
                "the header block ends at its first blank line");
  fuzz::require(count(head, "\r\n") == lines + 1, "every line was asked for");
  fuzz::require(count(head, "\r") == lines + 1 && count(head, "\n") == lines + 1,
                "no line end stands alone");
  fuzz::require(count(head, std::string(1, '\0')) == 0, "no line holds a zero byte");
}

std::string takeBytes(unsigned char* bytes, int length) {
  const std::unique_ptr<unsigned char[]> owner(bytes);
  return std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
}

void checkRequest(const Arguments& a) {
  int length = 0;
  unsigned char* bytes = HttpRequest::generateRequest(a.method, a.host, a.path, &length, 0,
                                                      a.responseType, a.userAgent, a.contentType,
                                                      a.charset, nullptr, 0, a.extraHeaders);
  const std::string request = takeBytes(bytes, length);
  requireLines(request, linesAskedFor(a));
  fuzz::require(
      !a.extraHeaders.empty() ||
          request == HttpRequest::generateRequest(a.method, a.host, a.path, "", 0, a.responseType,
                                                  a.userAgent, a.contentType, a.charset),
      "both forms say the same");
}

void checkPostRequest(const Arguments& a) {
  int length = 0;
  const auto* body = reinterpret_cast<const unsigned char*>(a.data.data());
  unsigned char* bytes = HttpRequest::generatePostRequest(
      a.host, a.path, &length, 0, a.responseType, a.userAgent, a.contentType, a.charset, body,
      static_cast<int>(a.data.size()), a.extraHeaders);
  const std::string request = takeBytes(bytes, length);
  const std::string tail = a.data.empty() ? std::string() : a.data + "\r\n";
  fuzz::require(request.size() > tail.size() &&
                    request.compare(request.size() - tail.size(), tail.size(), tail) == 0,
                "the body comes last");
  requireLines(request.substr(0, request.size() - tail.size()),
               linesAskedFor(a) + (a.data.empty() ? 0 : 1));
  fuzz::require(!a.extraHeaders.empty() || request == HttpRequest::generatePostRequest(
                                                          a.host, a.path, a.data, 0, a.responseType,
                                                          a.userAgent, a.contentType, a.charset),
                "both forms say the same");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Arguments arguments{fuzz::Fields(data, size)};
  if (!HttpRequest::findForbidden(arguments.texts()).empty()) return 0;
  checkRequest(arguments);
  checkPostRequest(arguments);
  return 0;
}
