#pragma once

#include <string>

#include "kvsc/OpenSslPtr.h"

namespace kvsc {

// A cache of the certificates that the process has read from PEM texts: parsing one takes longer
// than a whole plain exchange, and every client starts with the same two. The key is the text's
// SHA-256 digest. Any thread.

/// A shared reference to the certificate read from this text; null when it is not cached.
CertificatePtr cachedCertificate(const std::string& pem);

/// Caches the certificate read from this text, unless the cache is full.
void cacheCertificate(const std::string& pem, const CertificatePtr& certificate);

}  // namespace kvsc
