#include "playerx/settings/TrustedAuthorities.h"

#include <cstdlib>

#include "KPX/KPXPreferences.h"
#include "playerx/settings/PreferenceKeys.h"

namespace playerx {

TrustedAuthorities authoritiesOfEnvironment(
    const std::function<const char*(const char* name)>& valueOf) {
  const auto textOf = [&](const char* name) {
    const char* value = valueOf(name);
    return std::string(value == nullptr ? "" : value);
  };
  if (const std::string bundle = textOf("CURL_CA_BUNDLE"); !bundle.empty()) return {bundle, {}};
  return {textOf("SSL_CERT_FILE"), textOf("SSL_CERT_DIR")};
}

TrustedAuthorities authoritiesOfProcess() {
  return authoritiesOfEnvironment(
      [](const char* name) -> const char* { return std::getenv(name); });
}

TrustedAuthorities trustedAuthorities() {
  const QString chosen = KPXPreferences::getPreferenceHelper<QString>(kCaFileKey, QString(), true);
  return chosen.isEmpty() ? authoritiesOfProcess() : TrustedAuthorities{chosen.toStdString(), {}};
}

}  // namespace playerx
