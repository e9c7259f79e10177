// From an address to the headers of the response, redirects included.
#include <strings.h>

#include <cstdio>
#include <memory>

#include "kvsc/HttpRequest.h"
#include "kvsc/HttpStatus.h"
#include "kvsc/HttpUtilityVirtual.h"
#include "kvsc/OpenSsl.h"
#include "kvsc/SSLClient.h"

namespace kvsc {

/// A request without its address: the same on every hop of a redirect.
struct SSLClient::Request {
  std::string method;
  long ifModifiedSince = 0;
  std::string responseType;
  const unsigned char* data = nullptr;
  int length = 0;
  std::string extraHeaders;
  bool printsMismatch = true;  // prints on standard output that the peer has another name

  bool isPost() const { return strcasecmp(method.c_str(), "post") == 0; }
};

namespace {

constexpr const char* kRedirectRefused =
    "Redirection url is not defined or redirect count exceeded.";
constexpr const char* kPostContentType = "text/xml";
constexpr const char* kPostCharset = "UTF-8";

// Bounds the resolution of a redirect loop, which the session's counter does not.
constexpr int kMostHops = 50;

using Bytes = std::unique_ptr<unsigned char[]>;

bool mayRedirect(const SSLSession& session) {
  return session.getRedirectCount() < session.getMaxRedirectCount();
}

// The request ends the last header line itself.
std::string_view withoutLineEnd(std::string_view lines) {
  return lines.ends_with("\r\n") ? lines.substr(0, lines.size() - 2) : lines;
}

// A query is part of the request line, where a line end does harm but a zero byte does not.
bool isQuery(const unsigned char* data, int length) {
  const std::string_view text(reinterpret_cast<const char*>(data),
                              static_cast<std::size_t>(length));
  return text.find_first_of("\r\n") == std::string_view::npos;
}

}  // namespace

HttpErrorIds SSLClient::sendRequest(const std::string& url, long ifModifiedSince,
                                    const std::string& method, SSLSession* session,
                                    const std::string& responseType, const unsigned char* data,
                                    int length, const std::string& extraHeaders) {
  const int known = data != nullptr && length > 0 ? length : 0;
  return guarded(session, [&] {
    const std::string lines(withoutLineEnd(extraHeaders));
    return follow(url, {method, ifModifiedSince, responseType, data, known, lines}, session);
  });
}

HttpErrorIds SSLClient::sendRequest(const std::string& url, long ifModifiedSince,
                                    const std::string& method, SSLSession* session,
                                    const std::string& responseType, const std::string& data,
                                    const std::string& extraHeaders) {
  return sendRequest(url, ifModifiedSince, method, session, responseType,
                     reinterpret_cast<const unsigned char*>(data.data()), lengthFor(data),
                     extraHeaders);
}

HttpErrorIds SSLClient::follow(std::string url, const Request& request, SSLSession* session) {
  setErrorString("");
  close(session);
  for (;;) {
    const HttpErrorIds asked = openAndSend(url, request, session);
    if (asked != HTTP_ERROR_NONE) return asked;
    const auto read = static_cast<HttpErrorIds>(readHeaders(session, true));
    if (read == HTTP_ERROR_CANCELLED) return read;
    // The status of an earlier response stays: after a redirect, a response that breaks off is
    // another redirect, without an address.
    if (!isRedirect(getResponseCode())) {
      return read != HTTP_ERROR_NONE ? read : outcomeOfStatus(getResponseCode());
    }
    const std::string location = getResponseValue("Location");
    if (location.empty() || !mayRedirect(*session)) return failed(kRedirectRefused);
    discardResponse(session);
    setTotalDownloaded(0);
    session->setRedirectCount(session->getRedirectCount() + 1);
    url = location;
  }
}

// One connection, one request.
HttpErrorIds SSLClient::openAndSend(const std::string& url, const Request& request,
                                    SSLSession* session) {
  std::string path;
  const HttpErrorIds opened = openConnection(url, request, session, &path);
  if (opened != HTTP_ERROR_NONE) return opened;
  int length = 0;
  const Bytes bytes(build(request, *session, path, &length));
  HttpErrorIds written = HTTP_ERROR_NONE;
  if (writeData(session, bytes.get(), length, &written) == HTTP_ERROR_NONE) return HTTP_ERROR_NONE;
  return written == HTTP_ERROR_CANCELLED ? written : failed("SSLClient::writeData failed.");
}

HttpErrorIds SSLClient::openConnection(const std::string& url, const Request& request,
                                       SSLSession* session, std::string* path) {
  std::string host;
  std::string port;
  bool isHttps = false;
  if (HttpRequest::parseUri(url, &host, &port, path, &isHttps) != 0) return HTTP_ERROR_FAILED;
  session->setUseSSL(isHttps);
  session->setHost(host);
  session->setPort(port);
  clearResponseHeaders();
  if (!isSafe(request, *session, *path)) return HTTP_ERROR_FAILED;
  // Callers of `sendRequest` itself may not have set the mode that `httpGet` sets.
  if (session->getCheckCertificate()) session->setVerifyMode(SSL_VERIFY_PEER);
  if (connect(session) == nullptr) return connectFailure(session);
  return checkPeer(request, session);
}

bool SSLClient::isSafe(const Request& request, const SSLSession& session, const std::string& path) {
  std::string refusal = HttpRequest::findForbidden({.method = request.method,
                                                    .host = session.getHost(),
                                                    .port = session.getPort(),
                                                    .path = path,
                                                    .responseType = request.responseType,
                                                    .userAgent = session.getUserAgent(),
                                                    .contentType = {},
                                                    .charset = {},
                                                    .extraHeaders = request.extraHeaders});
  if (refusal.empty() && !request.isPost() && !isQuery(request.data, request.length)) {
    refusal = "Request refused: the query holds a line end.";
  }
  if (refusal.empty()) return true;
  setErrorString(refusal);
  return false;
}

HttpErrorIds SSLClient::connectFailure(SSLSession* session) {
  // The first error decides, except that the check of a forged list leaves errors of its own first.
  const bool certificate = wasRefusedByList() || isCertificateFailure(ERR_peek_error());
  collectErrors();
  close(session);
  if (session->isCancelled()) return HTTP_ERROR_CANCELLED;
  return certificate ? HTTP_ERROR_CERTIFICATE : HTTP_ERROR_FAILED;
}

HttpErrorIds SSLClient::checkPeer(const Request& request, SSLSession* session) {
  if (!session->getCheckCertificate()) return HTTP_ERROR_NONE;
  const long verdict = postConnectionCheck(session->getSsl(), session->getHost());
  if (verdict == X509_V_OK) {
    allowRenegotiations(session->getSsl());
    return HTTP_ERROR_NONE;
  }
  const std::string text = X509_verify_cert_error_string(verdict);
  if (request.printsMismatch) std::puts(text.c_str());
  return failed(text);
}

unsigned char* SSLClient::build(const Request& request, const SSLSession& session,
                                const std::string& path, int* length) {
  if (request.isPost()) {
    return HttpRequest::generatePostRequest(session.getHost(), path, length,
                                            request.ifModifiedSince, request.responseType,
                                            session.getUserAgent(), kPostContentType, kPostCharset,
                                            request.data, request.length, request.extraHeaders);
  }
  return HttpRequest::generateRequest(request.method, session.getHost(), path, length,
                                      request.ifModifiedSince, request.responseType,
                                      session.getUserAgent(), "", "", request.data, request.length,
                                      request.extraHeaders);
}

// Closes the connection of a redirect and drops what its response contained.
void SSLClient::discardResponse(SSLSession* session) {
  close(session);
  if (callerUtility_ != nullptr) callerUtility_->setBuffer(nullptr, 0);
  buffer_.Free();
}

HttpErrorIds SSLClient::failed(const std::string& text) {
  setErrorString(text);
  return HTTP_ERROR_FAILED;
}

std::string SSLClient::getRedirectUrl(const std::string& url, HttpErrorIds* result,
                                      SSLSession* session, SSLMethodProtocolType method) {
  std::string found;
  const HttpErrorIds outcome = guarded(session, [&] {
    prepare(session, method);
    return resolve(url, session, &found);
  });
  close(session);
  if (result != nullptr) *result = outcome;
  return found;
}

// Each hop resolves to its own Location unless the hops after it succeed, so that a failure
// anywhere leaves the first Location.
HttpErrorIds SSLClient::resolve(std::string url, SSLSession* session, std::string* found) {
  setErrorString("");
  close(session);
  Request head;
  head.method = "HEAD";
  head.responseType = "text/xml";
  head.printsMismatch = false;
  std::string first;
  for (int hop = 0;; ++hop) {
    HttpErrorIds outcome = openAndSend(url, head, session);
    // A response that breaks off is no redirect, so the address stands.
    if (outcome == HTTP_ERROR_NONE && readHeaders(session, true) == HTTP_ERROR_CANCELLED) {
      outcome = HTTP_ERROR_CANCELLED;
    }
    if (outcome != HTTP_ERROR_NONE || !isMoved(getResponseCode())) {
      *found = outcome == HTTP_ERROR_NONE && hop > 0 ? url : first;
      return outcome;
    }
    const std::string location = getResponseValue("Location");
    if (location.empty() || !mayRedirect(*session) || hop == kMostHops) {
      *found = first;
      return failed(kRedirectRefused);
    }
    discardResponse(session);
    if (hop == 0) first = location;
    url = location;
  }
}

}  // namespace kvsc
