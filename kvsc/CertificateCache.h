#pragma once

#include <string>

#include "kvsc/OpenSslPtr.h"

namespace kvsc {

/// The certificates that the process has read from PEM texts. Reading one takes longer than a whole
/// plain exchange, and every client begins with the same two. Of a text only its SHA-256 digest is
/// kept, which no other text shares. May be called from any thread.

/// The certificate of this very text, shared with whoever else has it; null when none was kept.
CertificatePtr knownCertificate(const std::string& pem);

/// Keeps the certificate of a text, as long as there are few.
void keepCertificate(const std::string& pem, const CertificatePtr& certificate);

}  // namespace kvsc
