#pragma once

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <string>

#include "kvsc/OpenSslPtr.h"
#include "kvsc/SSLMethodProtocolType.h"

namespace kvsc {

// What the secure client needs of OpenSSL 3 where its interface is not enough. All functions are
// safe on any thread; an error stays in the calling thread's error queue.

/// `SSL_library_init` and `SSL_load_error_strings`: one call, which the library would also make by
/// itself.
void startCryptoLibrary();

/// `SSLv2_method` to `TLSv1_method`: there is one method for all versions, and the context's bounds
/// choose. Null for SSLv2, which no library has, and for values that are no family.
SslContextPtr newClientContext(SSLMethodProtocolType family);

/// Lets a server that was verified ask for a new handshake under TLS 1.2, as it does to see a
/// client certificate for some of its paths, but only `kMostRenegotiations` times. Contexts made
/// here refuse it otherwise.
inline constexpr int kMostRenegotiations = 3;
void allowRenegotiations(SSL* ssl);

/// A verify depth of one issuer: the library counts only the certificates between it and the
/// server's.
inline constexpr int kVerifyDepthOfOneIssuer = 0;

/// `PEM_read_bio_RSAPrivateKey`: `RSA` objects are deprecated. Keys of other kinds are refused.
KeyPtr readRsaKey(BIO* pem, pem_password_cb* callback, void* userData);

/// `SSL_get_peer_certificate`: the peer's certificate, without a reference. Null when
/// there is no certificate.
X509* peerCertificateOf(const SSL* ssl);

/// Application data 0 of the store context: in a handshake it is empty, because the library keeps
/// the TLS object under an index of its own. Null without either.
SSL* sslOf(X509_STORE_CTX* context);

/// `X509_STORE_get_by_subject`: an `X509_OBJECT` cannot live on the stack, and a look-up returns
/// the list that was added first. Returns the newest list of that issuer, null when the store has
/// no list of it.
struct CrlFree {
  void operator()(X509_CRL* crl) const { X509_CRL_free(crl); }
};
using CrlPtr = std::unique_ptr<X509_CRL, CrlFree>;
CrlPtr newestCrlOf(X509_STORE* store, const X509_NAME* issuer);

/// The packed code 0x14090086: there are no function codes; library and reason decide.
bool isCertificateFailure(unsigned long code);

/// `ERR_get_error_line_data`: deprecated for a form that also names the function. Returns the code
/// of the oldest error, which leaves the queue, and 0 if absent.
unsigned long takeError(const char** file, int* line, const char** data, int* flags);

/// `ERR_remove_state`: the state of a thread ends with the thread. What remains is to leave no
/// entry on a thread that lives on; `OPENSSL_thread_stop` would also discard the state of the
/// host's own use of the library.
void releaseThreadErrors();

/// `CRYPTO_num_locks`, and the bit that requests a lock: the macros are hidden among the deprecated
/// ones. `CRYPTO_set_locking_callback` and the like compile to nothing.
inline constexpr int kCryptoLocks = 1;
inline constexpr int kCryptoLockBit = 1;

/// Adds an error of the operating system (an `errno` value) to the queue, as the library's own
/// connect BIO does; `what` names the failed operation.
void raiseSystemError(int number, const std::string& what);

/// The same for a failure without an `errno` value.
void raiseLookupError(const std::string& what);

/// The name of a value that `SSL_get_error` returns; empty for an unknown one.
const char* sslErrorName(int error);

}  // namespace kvsc
