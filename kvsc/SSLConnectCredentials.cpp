// The client's credentials, the trusted authority, and the TLS context made of both.
#include "kvsc/CAInfo.h"
#include "kvsc/CertificateCache.h"
#include "kvsc/OpenSsl.h"
#include "kvsc/SSLConnect.h"

namespace kvsc {
namespace {

BioPtr newMemoryBio() { return BioPtr(BIO_new(BIO_s_mem())); }

bool writeAll(BIO* bio, const std::string& text) {
  const auto length = static_cast<int>(text.size());
  return BIO_write(bio, text.data(), length) >= length;
}

// Like `writeAll`, but wipes the secret afterwards; the BIO wipes its own copy when it is freed.
bool writeSecret(BIO* bio, std::string secret) {
  const bool written = writeAll(bio, secret);
  OPENSSL_cleanse(secret.data(), secret.size());
  return written;
}

// How one of the certificates is read, with the texts of its failures.
struct CertificateKind {
  X509* (*read)(BIO* bio);
  const char* shortWrite;
  const char* unreadable;
};

constexpr CertificateKind kAuthority = {
    [](BIO* bio) {
      return PEM_read_bio_X509_AUX(bio, nullptr, SSLConnect::pem_passwd_cb, nullptr);
    },
    "Error reading in CA certificate into BIO", "Error reading in CA certificate into X509 object"};

constexpr CertificateKind kClient = {
    [](BIO* bio) { return PEM_read_bio_X509(bio, nullptr, SSLConnect::pem_passwd_cb, nullptr); },
    "Error reading in client certificate into BIO",
    "Error reading in client certificate into X509 object"};

// Returns the text of a failure, null on success.
const char* readCertificate(const std::string& pem, const CertificateKind& kind,
                            CertificatePtr* certificate) {
  if (CertificatePtr cached = cachedCertificate(pem)) {
    *certificate = std::move(cached);
    return nullptr;
  }
  const BioPtr bio = newMemoryBio();
  if (!bio) return "Unable to create memory BIOs to read in certificates";
  if (!writeAll(bio.get(), pem)) return kind.shortWrite;
  certificate->reset(kind.read(bio.get()));
  if (!*certificate) return kind.unreadable;
  cacheCertificate(pem, *certificate);
  return nullptr;
}

}  // namespace

void SSLConnect::init() {
  totalDownloaded_ = 0;
  try {
    if (!readCertificates()) return;
    initializeOnce();
    startCryptoLibrary();
  } catch (...) {
    storeText("SSLConnect::init() Unknown exception caught");
  }
}

bool SSLConnect::readCertificates() {
  const CAInfo info(environment_);
  const char* failure = readCertificate(info.getServerCert(), kAuthority, &caCert_);
  if (failure == nullptr) failure = readCertificate(info.getClientKey(), kClient, &clientCert_);
  return failure == nullptr || fail(failure);
}

int SSLConnect::setupContext(SSLSession* session, std::string* password) {
  try {
    SslContextPtr context = newClientContext(session->getSslMethod());
    if (!context) return fail("Unable to create an SSL context for this protocol");
    if (session->getCheckCertificate() && !prepareChecks(context.get(), *session, password)) {
      return 0;
    }
    SSLConnect::close(session);
    session->setSslContext(context.release());
    return 1;
  } catch (...) {
    return reportException("SSLConnect::setupContext() Unknown exception caught");
  }
}

bool SSLConnect::prepareChecks(SSL_CTX* context, const SSLSession& session, std::string* password) {
  // Set before any key is read: without a callback of its own the library asks on the terminal.
  SSL_CTX_set_default_passwd_cb(context, pem_passwd_cb);
  SSL_CTX_set_default_passwd_cb_userdata(context, password ? password->data() : nullptr);
  if (!trustAuthority(context) || !readClientKey(password)) return false;
  if (!installCredentials(context, session)) return false;
  // All keys are read by now.
  if (password == nullptr) SSL_CTX_set_default_passwd_cb(context, nullptr);
  SSL_CTX_set_verify(context, session.getVerifyMode(), verifyCallback);
  SSL_CTX_set_verify_depth(context, kVerifyDepthOfOneIssuer);
  const std::string& ciphers = session.getCipherList();
  return ciphers.empty() || SSL_CTX_set_cipher_list(context, ciphers.c_str()) == 1;
}

bool SSLConnect::trustAuthority(SSL_CTX* context) {
  X509_STORE* store = SSL_CTX_get_cert_store(context);
  if (caCert_ && X509_STORE_add_cert(store, caCert_.get()) == 1) return true;
  return fail("Error loading our CA certificate into the cert store");
}

bool SSLConnect::readClientKey(std::string* password) {
  const BioPtr bio = newMemoryBio();
  if (!bio) return fail("Unable to create memory key BIO to read in private key");
  if (!writeSecret(bio.get(), CAInfo(environment_).getClientPEM())) {
    return fail("Error reading in client key into BIO");
  }
  clientKey_ = readRsaKey(bio.get(), pem_passwd_cb, password ? password->data() : nullptr);
  return clientKey_ != nullptr || fail("Error reading in client key into RSA object");
}

bool SSLConnect::installCredentials(SSL_CTX* context, const SSLSession& session) {
  const std::string& file = session.getCertFile();
  if (!file.empty()) {
    if (SSL_CTX_use_certificate_file(context, file.c_str(), SSL_FILETYPE_PEM) != 1) {
      return fail("Unable to load certificate file");
    }
    return SSL_CTX_use_PrivateKey_file(context, file.c_str(), SSL_FILETYPE_PEM) == 1 ||
           fail("Error loading private key from file");
  }
  if (!clientCert_ || SSL_CTX_use_certificate(context, clientCert_.get()) != 1) {
    return fail("Unable to load certificate from memory");
  }
  return SSL_CTX_use_PrivateKey(context, clientKey_.get()) == 1 ||
         fail("Error loading private key from memory");
}

}  // namespace kvsc
