#include "tests/unit/kvsc/FailingOpenSsl.h"

#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>

namespace {

thread_local LibraryCall failing = LibraryCall::kNone;
thread_local int left = 0;
thread_local void (*handshakeWatcher)(const SSL*) = nullptr;

bool fails(LibraryCall call) { return call == failing && left-- == 0; }

}  // namespace

// The linker hands the program's own calls to these, and the library's functions to their bodies.
extern "C" {

BIO* __real_BIO_new(const BIO_METHOD* method);
BIO* __wrap_BIO_new(const BIO_METHOD* method) {
  return fails(LibraryCall::kBioNew) ? nullptr : __real_BIO_new(method);
}

int __real_BIO_write(BIO* bio, const void* data, int length);
int __wrap_BIO_write(BIO* bio, const void* data, int length) {
  return __real_BIO_write(bio, data, fails(LibraryCall::kBioWrite) ? length - 1 : length);
}

X509* __real_PEM_read_bio_X509_AUX(BIO* bio, X509** x, pem_password_cb* callback, void* data);
X509* __wrap_PEM_read_bio_X509_AUX(BIO* bio, X509** x, pem_password_cb* callback, void* data) {
  return fails(LibraryCall::kReadAuthority) ? nullptr
                                            : __real_PEM_read_bio_X509_AUX(bio, x, callback, data);
}

X509* __real_PEM_read_bio_X509(BIO* bio, X509** x, pem_password_cb* callback, void* data);
X509* __wrap_PEM_read_bio_X509(BIO* bio, X509** x, pem_password_cb* callback, void* data) {
  return fails(LibraryCall::kReadCertificate) ? nullptr
                                              : __real_PEM_read_bio_X509(bio, x, callback, data);
}

EVP_PKEY* __real_PEM_read_bio_PrivateKey(BIO* bio, EVP_PKEY** key, pem_password_cb* callback,
                                         void* data);
EVP_PKEY* __wrap_PEM_read_bio_PrivateKey(BIO* bio, EVP_PKEY** key, pem_password_cb* callback,
                                         void* data) {
  return fails(LibraryCall::kReadKey) ? nullptr
                                      : __real_PEM_read_bio_PrivateKey(bio, key, callback, data);
}

int __real_X509_STORE_add_cert(X509_STORE* store, X509* certificate);
int __wrap_X509_STORE_add_cert(X509_STORE* store, X509* certificate) {
  return fails(LibraryCall::kAddToStore) ? 0 : __real_X509_STORE_add_cert(store, certificate);
}

int __real_SSL_CTX_use_certificate(SSL_CTX* context, X509* certificate);
int __wrap_SSL_CTX_use_certificate(SSL_CTX* context, X509* certificate) {
  return fails(LibraryCall::kUseCertificate) ? 0
                                             : __real_SSL_CTX_use_certificate(context, certificate);
}

int __real_SSL_CTX_use_PrivateKey(SSL_CTX* context, EVP_PKEY* key);
int __wrap_SSL_CTX_use_PrivateKey(SSL_CTX* context, EVP_PKEY* key) {
  return fails(LibraryCall::kUseKey) ? 0 : __real_SSL_CTX_use_PrivateKey(context, key);
}

SSL* __real_SSL_new(SSL_CTX* context);
SSL* __wrap_SSL_new(SSL_CTX* context) {
  return fails(LibraryCall::kSslNew) ? nullptr : __real_SSL_new(context);
}

int __real_SSL_connect(SSL* ssl);
int __wrap_SSL_connect(SSL* ssl) {
  if (handshakeWatcher != nullptr) handshakeWatcher(ssl);
  return __real_SSL_connect(ssl);
}

}  // extern "C"

FailingOpenSsl::FailingOpenSsl(LibraryCall call, int passed) {
  failing = call;
  left = passed;
}

FailingOpenSsl::~FailingOpenSsl() { failing = LibraryCall::kNone; }

void watchHandshakes(void (*watcher)(const SSL* ssl)) { handshakeWatcher = watcher; }
