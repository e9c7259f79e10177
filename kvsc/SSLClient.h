#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "kvsc/DataBuffer.h"
#include "kvsc/HttpErrorIds.h"
#include "kvsc/SSLConnect.h"

namespace kvsc {

class HttpUtilityVirtual;

/// The secure HTTP client: one request at a time, on the calling thread, its body streamed to the
/// caller's callbacks.
///
/// Used by one thread at a time; another thread ends an exchange through the session's cancel
/// token. Every operation reports through `HttpErrorIds` and `getErrorString`; nothing throws. The
/// callbacks run on the calling thread, inside the exchange, and must not use this client.
class SSLClient : public SSLConnect {
 public:
  /// Called with size 1 and count bytes; the value it returns is ignored.
  using DataCallback = std::size_t (*)(void* data, std::size_t size, std::size_t count,
                                       void* context);
  /// Called after each piece of the body. The totals are always 0; -1 cancels the exchange.
  using ProgressCallback = int (*)(void* context, double downloadTotal, double downloadNow,
                                   double uploadTotal, double uploadNow);

  explicit SSLClient(const std::string& environment);
  ~SSLClient() override;

  /// Reads the credentials again and clears every callback and context.
  void init() override;

  /// Sends a close_notify if that needs no waiting, then frees the session's connection and
  /// context.
  void close(SSLSession* session) override;

  /// Receives each header line of a response, with its line end; not those of a 301 or 302.
  void setHeaderCallback(DataCallback callback) { headerCallback_ = callback; }
  /// Receives the body, piece by piece.
  void setBodyCallback(DataCallback callback) { bodyCallback_ = callback; }
  /// Receives the body as well, while there is a file context.
  void setFileWriteCallback(DataCallback callback) { fileWriteCallback_ = callback; }
  void setProgressCallback(ProgressCallback callback) { progressCallback_ = callback; }

  void* getHeaderContext() const { return headerContext_; }
  void setHeaderContext(void* context) { headerContext_ = context; }
  void* getBodyContext() const { return bodyContext_; }
  void setBodyContext(void* context) { bodyContext_ = context; }
  void* getFileContext() const { return fileContext_; }
  void setFileContext(void* context) { fileContext_ = context; }
  void* getProgressContext() const { return progressContext_; }
  void setProgressContext(void* context) { progressContext_ = context; }

  /// The utility whose buffer is emptied when a redirect is followed. Not owned; may be null.
  void setCallerUtility(HttpUtilityVirtual* utility) { callerUtility_ = utility; }

  /// Fetches `url`. `ifModifiedSince` is in seconds since 1970; 0 leaves the header out. Returns
  /// `*result`.
  int httpGet(const std::string& url, long ifModifiedSince, HttpErrorIds* result,
              SSLSession* session, const std::string& responseType, const std::string& extraHeaders,
              SSLMethodProtocolType method);

  /// Fetches the headers of `url` alone. Returns `*result`.
  int httpHead(const std::string& url, long ifModifiedSince, HttpErrorIds* result,
               SSLSession* session, const std::string& responseType,
               const std::string& extraHeaders, SSLMethodProtocolType method);

  /// Sends `data` as a POST, or as the query text of a GET without `usePost`, and fetches the
  /// response. The protocol `method` applies only while certificates are checked. Returns
  /// `*result`.
  int httpPost(const std::string& url, const unsigned char* data, int length, HttpErrorIds* result,
               SSLSession* session, const std::string& responseType,
               const std::string& extraHeaders, SSLMethodProtocolType method, bool usePost);
  int httpPost(const std::string& url, const std::string& data, HttpErrorIds* result,
               SSLSession* session, const std::string& responseType,
               const std::string& extraHeaders, SSLMethodProtocolType method, bool usePost);

  /// Connects, sends the request, reads the headers, follows redirects. The connection stays open
  /// for `readData`; the caller closes the session.
  HttpErrorIds sendRequest(const std::string& url, long ifModifiedSince, const std::string& method,
                           SSLSession* session, const std::string& responseType,
                           const unsigned char* data, int length, const std::string& extraHeaders);
  HttpErrorIds sendRequest(const std::string& url, long ifModifiedSince, const std::string& method,
                           SSLSession* session, const std::string& responseType,
                           const std::string& data, const std::string& extraHeaders);

  /// Resolves where `url` finally leads with HEAD requests; empty with result 0 when it is not
  /// redirected. A redirect limit of 0 refuses redirects; any other value is no limit here.
  std::string getRedirectUrl(const std::string& url, HttpErrorIds* result, SSLSession* session,
                             SSLMethodProtocolType method);

  /// Reads once. A header block that is complete in these bytes is parsed and passed to the header
  /// callback; the rest, or everything when no block ends in them, is body. Returns 0, or an
  /// `HttpErrorIds` with the session closed.
  int readHeaders(SSLSession* session, bool suppressRedirectHeaders);

  /// Streams the body until the server ends it.
  void readData(SSLSession* session, HttpErrorIds* result);

  /// Writes the whole request. Returns 0, or an `HttpErrorIds` that it also stores in `*result`.
  int writeData(SSLSession* session, unsigned char* data, int length, HttpErrorIds* result);

  /// Four texts for the owner's own use, empty at first; `index` is 0 to 3.
  const std::string& getText(std::size_t index) const { return texts_.at(index); }
  void setText(std::size_t index, const std::string& text) { texts_.at(index) = text; }

 private:
  struct Request;

  /// The text's length as an `int`; a longer text becomes a length that no request can hold either.
  static int lengthFor(const std::string& data);

  /// Runs a part of an exchange; an exception is a failure.
  template <typename Operation>
  HttpErrorIds guarded(SSLSession* session, Operation operation) noexcept {
    try {
      return operation();
    } catch (...) {
      return abandon(session);
    }
  }
  HttpErrorIds abandon(SSLSession* session) noexcept;

  static void prepare(SSLSession* session, SSLMethodProtocolType method);
  int finish(HttpErrorIds sent, bool withBody, SSLSession* session, HttpErrorIds* result);

  HttpErrorIds follow(std::string url, const Request& request, SSLSession* session);
  HttpErrorIds resolve(std::string url, SSLSession* session, std::string* found);
  HttpErrorIds openAndSend(const std::string& url, const Request& request, SSLSession* session);
  HttpErrorIds openConnection(const std::string& url, const Request& request, SSLSession* session,
                              std::string* path);
  bool isSafe(const Request& request, const SSLSession& session, const std::string& path);
  HttpErrorIds connectFailure(SSLSession* session);
  HttpErrorIds checkPeer(const Request& request, SSLSession* session);
  static unsigned char* build(const Request& request, const SSLSession& session,
                              const std::string& path, int* length);
  void discardResponse(SSLSession* session);
  HttpErrorIds failed(const std::string& text);

  bool writeEncrypted(SSLSession* session, const unsigned char* data, int length);
  bool writePlain(SSLSession* session, const unsigned char* data, int length);
  bool growBuffer(const SSLSession& session);
  HttpErrorIds readResponse(SSLSession* session, bool suppressRedirectHeaders);
  bool readHeaderBlock(std::string_view block, bool suppressRedirectHeaders);
  void deliverFirstBody(char* data, int length, bool suppressRedirectHeaders);
  void deliver(char* data, int length);
  HttpErrorIds streamBody(SSLSession* session);
  bool deliverBody(char* data, int length);
  HttpErrorIds endOfBody(SSLSession* session, int count);
  HttpErrorIds readFailure(SSLSession* session);

  std::array<std::string, 4> texts_;
  DataCallback headerCallback_ = nullptr;
  DataCallback bodyCallback_ = nullptr;
  DataCallback fileWriteCallback_ = nullptr;
  ProgressCallback progressCallback_ = nullptr;
  void* headerContext_ = nullptr;
  void* bodyContext_ = nullptr;
  void* fileContext_ = nullptr;
  void* progressContext_ = nullptr;
  HttpUtilityVirtual* callerUtility_ = nullptr;
  DataBuffer buffer_;
};

}  // namespace kvsc
