#include "kvsc/SSLClient.h"

#include <algorithm>
#include <climits>

#include "kvsc/OpenSsl.h"
#include "kvsc/SocketBio.h"

namespace kvsc {
namespace {

// Sends a close_notify if that is possible without waiting. The errors it leaves are dropped: they
// must not be taken for the reason of an earlier failure.
void sendCloseNotify(SSL* ssl, BIO* bio) {
  if (Waiter* waiter = waiterOf(bio)) waiter->stopWaiting();
  ERR_set_mark();
  if (SSL_is_init_finished(ssl)) SSL_shutdown(ssl);
  ERR_pop_to_mark();
}

}  // namespace

SSLClient::SSLClient(const std::string& environment) : SSLConnect(environment) {}

SSLClient::~SSLClient() = default;

void SSLClient::init() {
  SSLConnect::init();
  headerCallback_ = nullptr;
  bodyCallback_ = nullptr;
  fileWriteCallback_ = nullptr;
  progressCallback_ = nullptr;
  headerContext_ = nullptr;
  bodyContext_ = nullptr;
  fileContext_ = nullptr;
  progressContext_ = nullptr;
}

void SSLClient::close(SSLSession* session) {
  const SslPtr ssl(session->getSsl());
  BIO* bio = session->getConnect();
  session->setSsl(nullptr);
  session->setConnect(nullptr);
  if (ssl) {
    sendCloseNotify(ssl.get(), bio);
  } else if (bio != nullptr) {
    freeConnection(bio, false);
  }
  SSLConnect::close(session);
}

int SSLClient::httpGet(const std::string& url, long ifModifiedSince, HttpErrorIds* result,
                       SSLSession* session, const std::string& responseType,
                       const std::string& extraHeaders, SSLMethodProtocolType method) {
  setTotalDownloaded(0);
  prepare(session, method);
  const HttpErrorIds sent =
      sendRequest(url, ifModifiedSince, "GET", session, responseType, nullptr, 0, extraHeaders);
  return finish(sent, true, session, result);
}

int SSLClient::httpHead(const std::string& url, long ifModifiedSince, HttpErrorIds* result,
                        SSLSession* session, const std::string& responseType,
                        const std::string& extraHeaders, SSLMethodProtocolType method) {
  prepare(session, method);
  const HttpErrorIds sent =
      sendRequest(url, ifModifiedSince, "HEAD", session, responseType, nullptr, 0, extraHeaders);
  return finish(sent, false, session, result);
}

int SSLClient::httpPost(const std::string& url, const unsigned char* data, int length,
                        HttpErrorIds* result, SSLSession* session, const std::string& responseType,
                        const std::string& extraHeaders, SSLMethodProtocolType method,
                        bool usePost) {
  setTotalDownloaded(0);
  // Without certificates the session keeps the protocol that it was given.
  if (session->getCheckCertificate()) prepare(session, method);
  const HttpErrorIds sent = sendRequest(url, 0, usePost ? "POST" : "GET", session, responseType,
                                        data, length, extraHeaders);
  return finish(sent, true, session, result);
}

int SSLClient::httpPost(const std::string& url, const std::string& data, HttpErrorIds* result,
                        SSLSession* session, const std::string& responseType,
                        const std::string& extraHeaders, SSLMethodProtocolType method,
                        bool usePost) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(data.data());
  return httpPost(url, bytes, lengthFor(data), result, session, responseType, extraHeaders, method,
                  usePost);
}

int SSLClient::lengthFor(const std::string& data) {
  return static_cast<int>(std::min<std::size_t>(data.size(), INT_MAX));
}

void SSLClient::prepare(SSLSession* session, SSLMethodProtocolType method) {
  session->setSslMethod(method);
  if (session->getCheckCertificate()) session->setVerifyMode(SSL_VERIFY_PEER);
}

HttpErrorIds SSLClient::abandon(SSLSession* session) noexcept {
  close(session);
  storeText("SSLClient: the exchange ended by an exception");
  return HTTP_ERROR_FAILED;
}

int SSLClient::finish(HttpErrorIds sent, bool withBody, SSLSession* session, HttpErrorIds* result) {
  HttpErrorIds outcome = sent;
  if (outcome == HTTP_ERROR_NONE && withBody) readData(session, &outcome);
  close(session);
  if (result != nullptr) *result = outcome;
  return outcome;
}

}  // namespace kvsc
