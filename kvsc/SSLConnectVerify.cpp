// Verification of the peer.
#include "kvsc/CertificateCheck.h"
#include "kvsc/OpenSsl.h"
#include "kvsc/SSLConnect.h"

namespace kvsc {
namespace {

// Whether a renegotiation presents the certificate of another host: the check after connecting has
// seen only the first one.
bool hasChangedHost(SSL* ssl, X509_STORE_CTX* context, const SSLSession& session) {
  if (SSL_num_renegotiations(ssl) == 0 || X509_STORE_CTX_get_error_depth(context) != 0)
    return false;
  if (isForHost(X509_STORE_CTX_get_current_cert(context), session.getHost())) return false;
  X509_STORE_CTX_set_error(context, X509_V_ERR_APPLICATION_VERIFICATION);
  return true;
}

// Builds the text about a rejected certificate and drops it: it is there for a debugger alone.
// `connect` reports the failed handshake under the name of its error, and the library's error queue
// tells a certificate failure from others.
void describeRefusal(X509_STORE_CTX* context, const SSLSession* session) {
  std::string text = refusalText(context);
  const SSLConnect* owner = session != nullptr ? session->getHandshakeOwner() : nullptr;
  if (owner != nullptr) text += owner->getErrorString();
}

}  // namespace

int SSLConnect::verifyCallback(int ok, X509_STORE_CTX* context) {
  try {
    SSL* ssl = sslOf(context);
    auto* session = ssl != nullptr ? static_cast<SSLSession*>(SSL_get_app_data(ssl)) : nullptr;
    if (ssl != nullptr) ok = crlCheck(ok, context, session);
    if (ok != 0 && session != nullptr && hasChangedHost(ssl, context, *session)) ok = 0;
    if (ok != 0) return ok;
    describeRefusal(context, session);
  } catch (...) {
    // Without memory for the text the handshake ends all the same.
  }
  return 0;
}

int SSLConnect::crlCheck(int ok, X509_STORE_CTX* context, SSLSession* session) {
  if (session == nullptr || session->getCrlStore() == nullptr) return ok;
  const CrlVerdict verdict =
      checkAgainstCrls(X509_STORE_CTX_get_current_cert(context), session->getCrlStore());
  SSLConnect* owner = session->getHandshakeOwner();
  if (owner != nullptr) owner->noteVerdict(verdict);
  if (verdict.storeError != 0) X509_STORE_CTX_set_error(context, verdict.storeError);
  return verdict.accepted ? ok : 0;
}

void SSLConnect::noteVerdict(const CrlVerdict& verdict) {
  if (!verdict.text.empty()) errorString_ = verdict.text;
  if (!verdict.accepted) refusedByList_ = true;
}

long SSLConnect::postConnectionCheck(SSL* ssl, const std::string& host) {
  const X509* certificate = ssl != nullptr ? peerCertificateOf(ssl) : nullptr;
  if (certificate == nullptr || !isForHost(certificate, host)) {
    return X509_V_ERR_APPLICATION_VERIFICATION;
  }
  return SSL_get_verify_result(ssl);
}

}  // namespace kvsc
