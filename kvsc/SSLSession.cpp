#include "kvsc/SSLSession.h"

#include "kvsc/CancelToken.h"
#include "kvsc/OpenSsl.h"

namespace kvsc {

SSLSession::SSLSession() = default;

SSLSession::~SSLSession() = default;

void SSLSession::clear() {
  sslContext_ = nullptr;
  certFile_.clear();
  connect_ = nullptr;
  ssl_ = nullptr;
  randomFile_.clear();
  caFile_.clear();
  verifyMode_ = 0;
  checkCertificate_ = false;
  downloadLoopSleep_ = 0;
  sslMethod_ = SSLV3;
  host_.clear();
  port_.clear();
  password_.clear();
  cipherList_.clear();
  proxyURL_.clear();
  proxyPort_ = kDefaultProxyPort;
  useSSL_ = false;
  downloadSize_ = kDefaultDownloadSize;
  userAgent_.clear();
  maxRedirectCount_ = 0;
  redirectCount_ = 0;
  crlFile_.clear();
  crlStore_.reset();
  handshakeOwner_ = nullptr;
  waitTimeout_ = kDefaultWaitTimeout;
  exchangeTimeout_ = kDefaultExchangeTimeout;
  cancelToken_ = nullptr;
  dialer_ = nullptr;
}

void SSLSession::setCrlFile(const std::string& path) {
  crlFile_ = path;
  initCrlStore();
}

bool SSLSession::isCancelled() const {
  return cancelToken_ != nullptr && cancelToken_->isCancelled();
}

void SSLSession::setCrlStore(X509_STORE* store) {
  static_cast<void>(crlStore_.release());  // the caller's from now on
  crlStore_.reset(store);
}

void SSLSession::initCrlStore() {
  crlStore_.reset();
  if (crlFile_.empty()) return;
  crlStore_.reset(X509_STORE_new());
  if (!crlStore_) return;
  X509_LOOKUP* lookup = X509_STORE_add_lookup(crlStore_.get(), X509_LOOKUP_file());
  if (lookup == nullptr) return;
  X509_LOOKUP_load_file(lookup, crlFile_.c_str(), X509_FILETYPE_PEM);
}

}  // namespace kvsc
