#pragma once

#include <openssl/types.h>

#include <string>

namespace kvsc {

/// The outcome of a check against revocation lists.
struct CrlVerdict {
  bool accepted = true;
  std::string text;    ///< the reason of a rejection, or a note; may be empty
  int storeError = 0;  ///< X509 verification result to set; 0 to leave the present one
};

/// Checks a certificate against the lists of `store`: the list that it issued itself, if there is
/// one, must be signed by it and not be expired; the list of its issuer must not name it. Any
/// thread.
CrlVerdict checkAgainstCrls(X509* certificate, X509_STORE* store);

/// Whether one of the certificate's subjectAltName entries is this DNS name, byte for byte.
bool hasDnsName(const X509* certificate, const std::string& host);

/// Whether the certificate's subject has a common name, and one that is not `host`.
bool hasOtherCommonName(const X509* certificate, const std::string& host);

/// Whether the certificate may stand for `host`: one of its DNS names is the host, or its common
/// name does not contradict it.
bool isForHost(const X509* certificate, const std::string& host);

/// Issuer or subject as one line of at most 255 characters, for messages only.
std::string nameLine(const X509_NAME* name);

/// One line about the certificate that the store context has just rejected.
std::string refusalText(X509_STORE_CTX* context);

}  // namespace kvsc
