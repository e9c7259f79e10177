#include "playerx/settings/TrustedAuthorities.h"

#include <cstdlib>

#include "KPX/KPXPreferences.h"
#include "playerx/settings/PreferenceKeys.h"

namespace playerx {

namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

}  // namespace

TrustedAuthorities trustedAuthorities() {
  const QString chosen = KPXPreferences::getPreferenceHelper<QString>(kCaFileKey, QString(), true);
  if (!chosen.isEmpty()) return {chosen.toStdString(), ""};
  const std::string bundle = environment("CURL_CA_BUNDLE");
  if (!bundle.empty()) return {bundle, ""};
  return {environment("SSL_CERT_FILE"), environment("SSL_CERT_DIR")};
}

}  // namespace playerx
