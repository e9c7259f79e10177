#pragma once

#include <string>

namespace playerx {

/// Certificate authorities that the player trusts; UTF-8 paths. Both empty: the system's.
struct TrustedAuthorities {
  std::string file;    ///< PEM file
  std::string folder;  ///< folder of hashed PEM files
};

/// The authorities of the preference "General/CaFile", or else those that the environment names as
/// curl reads it: CURL_CA_BUNDLE, SSL_CERT_FILE, SSL_CERT_DIR. May be called from any thread while
/// nobody changes the environment.
TrustedAuthorities trustedAuthorities();

}  // namespace playerx
