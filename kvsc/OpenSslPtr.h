#pragma once

#include <openssl/types.h>

#include <memory>

namespace kvsc {

/// Deleter for objects of the crypto library.
struct OpenSslFree {
  void operator()(BIO* bio) const;  ///< the whole chain
  void operator()(EVP_PKEY* key) const;
  void operator()(SSL* ssl) const;
  void operator()(SSL_CTX* context) const;
  void operator()(X509* certificate) const;
  void operator()(X509_STORE* store) const;
};

using BioPtr = std::unique_ptr<BIO, OpenSslFree>;
using KeyPtr = std::unique_ptr<EVP_PKEY, OpenSslFree>;
using SslPtr = std::unique_ptr<SSL, OpenSslFree>;
using SslContextPtr = std::unique_ptr<SSL_CTX, OpenSslFree>;
using CertificatePtr = std::unique_ptr<X509, OpenSslFree>;
using StorePtr = std::unique_ptr<X509_STORE, OpenSslFree>;

}  // namespace kvsc
