#include "kvsc/OpenSsl.h"

#include <openssl/x509_vfy.h>

#include <array>

namespace kvsc {
namespace {

struct StoreContextFree {
  void operator()(X509_STORE_CTX* context) const { X509_STORE_CTX_free(context); }
};

struct CrlsFree {
  void operator()(STACK_OF(X509_CRL) * crls) const { sk_X509_CRL_pop_free(crls, X509_CRL_free); }
};

bool boundVersions(SSL_CTX* context, SSLMethodProtocolType family) {
  if (family == TLSV1) {
    // Its signatures are below every level but the lowest; at any other it could only fail.
    SSL_CTX_set_security_level(context, 0);
    return SSL_CTX_set_min_proto_version(context, TLS1_VERSION) == 1 &&
           SSL_CTX_set_max_proto_version(context, TLS1_VERSION) == 1;
  }
  return SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION) == 1 &&
         SSL_CTX_set_max_proto_version(context, 0) == 1;
}

// Called before a new handshake is granted, which may come many times within a single read.
void boundRenegotiations(const SSL* ssl, int where, int) {
  auto* connection = const_cast<SSL*>(ssl);
  if ((where & SSL_CB_HANDSHAKE_START) == 0) return;
  if (SSL_num_renegotiations(connection) < kMostRenegotiations) return;
  SSL_set_options(connection, SSL_OP_NO_RENEGOTIATION);
}

bool isNewer(const X509_CRL* one, const X509_CRL* other) {
  return ASN1_TIME_compare(X509_CRL_get0_lastUpdate(one), X509_CRL_get0_lastUpdate(other)) > 0;
}

// The file is named by hand: `__FILE__` would contain the path of the build.
void raise(int library, int reason, const std::string& what) {
  ERR_new();
  ERR_set_debug("kvsc", 0, nullptr);
  ERR_set_error(library, reason, "%s", what.c_str());
}

}  // namespace

void OpenSslFree::operator()(BIO* bio) const { BIO_free_all(bio); }
void OpenSslFree::operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
void OpenSslFree::operator()(SSL* ssl) const { SSL_free(ssl); }
void OpenSslFree::operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
void OpenSslFree::operator()(X509* certificate) const { X509_free(certificate); }
void OpenSslFree::operator()(X509_STORE* store) const { X509_STORE_free(store); }

void startCryptoLibrary() {
  OPENSSL_init_ssl(OPENSSL_INIT_LOAD_SSL_STRINGS | OPENSSL_INIT_LOAD_CRYPTO_STRINGS, nullptr);
}

SslContextPtr newClientContext(SSLMethodProtocolType family) {
  if (family != SSLV23 && family != SSLV3 && family != TLSV1) return nullptr;
  SslContextPtr context(SSL_CTX_new(TLS_client_method()));
  if (!context || !boundVersions(context.get(), family)) return nullptr;
  SSL_CTX_set_session_cache_mode(context.get(), SSL_SESS_CACHE_OFF);
  SSL_CTX_set_options(context.get(), SSL_OP_NO_TICKET | SSL_OP_NO_RENEGOTIATION);
  SSL_CTX_set_read_ahead(context.get(), 1);
  return context;
}

void allowRenegotiations(SSL* ssl) {
  SSL_clear_options(ssl, SSL_OP_NO_RENEGOTIATION);
  SSL_set_info_callback(ssl, boundRenegotiations);
}

KeyPtr readRsaKey(BIO* pem, pem_password_cb* callback, void* userData) {
  KeyPtr key(PEM_read_bio_PrivateKey(pem, nullptr, callback, userData));
  if (!key || EVP_PKEY_is_a(key.get(), "RSA")) return key;
  ERR_raise(ERR_LIB_EVP, EVP_R_EXPECTING_AN_RSA_KEY);
  return nullptr;
}

X509* peerCertificateOf(const SSL* ssl) { return SSL_get0_peer_certificate(ssl); }

SSL* sslOf(X509_STORE_CTX* context) {
  void* ssl = X509_STORE_CTX_get_ex_data(context, SSL_get_ex_data_X509_STORE_CTX_idx());
  return static_cast<SSL*>(ssl != nullptr ? ssl : X509_STORE_CTX_get_app_data(context));
}

CrlPtr newestCrlOf(X509_STORE* store, const X509_NAME* issuer) {
  const std::unique_ptr<X509_STORE_CTX, StoreContextFree> lookup(X509_STORE_CTX_new());
  if (!lookup || X509_STORE_CTX_init(lookup.get(), store, nullptr, nullptr) != 1) return nullptr;
  const std::unique_ptr<STACK_OF(X509_CRL), CrlsFree> crls(
      X509_STORE_CTX_get1_crls(lookup.get(), issuer));
  X509_CRL* newest = nullptr;
  for (int i = 0; crls && i < sk_X509_CRL_num(crls.get()); ++i) {
    X509_CRL* crl = sk_X509_CRL_value(crls.get(), i);
    if (newest == nullptr || isNewer(crl, newest)) newest = crl;
  }
  if (newest != nullptr) X509_CRL_up_ref(newest);
  return CrlPtr(newest);
}

bool isCertificateFailure(unsigned long code) {
  return ERR_GET_LIB(code) == ERR_LIB_SSL &&
         ERR_GET_REASON(code) == SSL_R_CERTIFICATE_VERIFY_FAILED;
}

unsigned long takeError(const char** file, int* line, const char** data, int* flags) {
  return ERR_get_error_all(file, line, nullptr, data, flags);
}

void releaseThreadErrors() { ERR_clear_error(); }

void raiseSystemError(int number, const std::string& what) { raise(ERR_LIB_SYS, number, what); }

void raiseLookupError(const std::string& what) { raise(ERR_LIB_BIO, ERR_R_SYS_LIB, what); }

namespace {

constexpr std::array<const char*, 9> kErrorNames = {"SSL_ERROR_NONE",
                                                    "SSL_ERROR_SSL",
                                                    "SSL_ERROR_WANT_READ",
                                                    "SSL_ERROR_WANT_WRITE",
                                                    "SSL_ERROR_WANT_X509_LOOKUP",
                                                    "SSL_ERROR_SYSCALL",
                                                    "SSL_ERROR_ZERO_RETURN",
                                                    "SSL_ERROR_WANT_CONNECT",
                                                    "SSL_ERROR_WANT_ACCEPT"};

}  // namespace

const char* sslErrorName(int error) {
  const auto index = static_cast<std::size_t>(error);
  return index < kErrorNames.size() ? kErrorNames[index] : "";
}

}  // namespace kvsc
