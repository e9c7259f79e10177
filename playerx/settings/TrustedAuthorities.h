#pragma once

#include <functional>
#include <string>

namespace playerx {

/// Certificate authorities that the player trusts; UTF-8 paths. Both empty: the system's. What is
/// named replaces the system's, file and folder alike.
struct TrustedAuthorities {
  std::string file;    ///< PEM file
  std::string folder;  ///< folder of PEM files under hashed names

  bool operator==(const TrustedAuthorities&) const = default;
};

/// The authorities that an environment names as curl reads it: CURL_CA_BUNDLE, or else
/// SSL_CERT_FILE and SSL_CERT_DIR. `valueOf` returns the value of a variable, null when it is not
/// set.
TrustedAuthorities authoritiesOfEnvironment(
    const std::function<const char*(const char* name)>& valueOf);

/// Those that the process's environment names. May be called from any thread while the
/// environment does not change.
TrustedAuthorities authoritiesOfProcess();

/// The authorities of the preference "General/CaFile", or else those of the process. Threads as
/// above.
TrustedAuthorities trustedAuthorities();

}  // namespace playerx
