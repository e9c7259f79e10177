#pragma once

#include <string>
#include <string_view>

namespace kvsc {

/// Builds the exact bytes of HTTP/1.0 requests and splits addresses into their pieces.
///
/// There is no state: every operation is a pure function of its arguments (and, for
/// `If-Modified-Since`, of the process's time zone), callable from any thread. An empty string
/// means "option not given" for every optional string.
///
/// A request comes back as an array from `new[]` that the caller frees with `delete[]`, because a
/// query or a body may hold zero bytes. Only allocation can fail: `std::bad_alloc`, also for a
/// request whose length does not fit an `int`.
class HttpRequest {
 public:
  /// The texts of a request that become part of its header block, for `findForbidden`.
  struct Texts {
    std::string_view method = {};
    std::string_view host = {};
    std::string_view port = {};
    std::string_view path = {};
    std::string_view responseType = {};
    std::string_view userAgent = {};
    std::string_view contentType = {};
    std::string_view charset = {};
    std::string_view extraHeaders = {};
  };

  /// Splits `uri`. Returns 0 on success and -1 on failure: no ":", neither "http" nor "https"
  /// anywhere, or no "//" after the first ":". `port` is the scheme word, a service name, unless
  /// the address names a port. An '@' or '#' stays part of the host or path. On failure the
  /// out-parameters hold what was found so far. They must not be null.
  static int parseUri(std::string uri, std::string* host, std::string* port, std::string* path,
                      bool* isHttps);

  /// The reason why these texts must not be sent, as one sentence, or an empty string when they
  /// may. A text with a CR, LF or zero byte would smuggle lines into the request or cut it short.
  /// `extraHeaders` alone may hold "\r\n", between its headers: never at its ends, never twice in a
  /// row. The generators do not check this; the sender does.
  static std::string findForbidden(const Texts& texts);

  /// Request for any method but POST. `data` lands directly after the path, as the query text of a
  /// GET (with the "?" or "&" that it needs). `dataLength` is counted even when `data` is null (the
  /// array then ends in as many zero bytes), so pass 0 without data; below 0 counts as 0.
  /// `ifModifiedSince` is in seconds since 1970; 0 or less leaves the header out.
  static unsigned char* generateRequest(std::string method, std::string host, std::string path,
                                        int* outLength, long ifModifiedSince,
                                        std::string responseType, std::string userAgent,
                                        std::string contentType, std::string charset,
                                        const unsigned char* data, int dataLength,
                                        std::string extraHeaders);

  /// The same request as a string, its data given as a string, without extra headers.
  static std::string generateRequest(std::string method, std::string host, std::string path,
                                     std::string data, long ifModifiedSince,
                                     std::string responseType, std::string userAgent,
                                     std::string contentType, std::string charset);

  /// POST request. A body is followed by one more "\r\n" that Content-Length does not count.
  static unsigned char* generatePostRequest(std::string host, std::string path, int* outLength,
                                            long ifModifiedSince, std::string responseType,
                                            std::string userAgent, std::string contentType,
                                            std::string charset, const unsigned char* body,
                                            int bodyLength, std::string extraHeaders);

  /// The same request as a string, its body given as a string, without extra headers.
  static std::string generatePostRequest(std::string host, std::string path, std::string body,
                                         long ifModifiedSince, std::string responseType,
                                         std::string userAgent, std::string contentType,
                                         std::string charset);
};

}  // namespace kvsc
