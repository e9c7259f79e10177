#include "playerx/transfers/Trust.h"

namespace playerx::transfers {

Trust trustOfEnvironment(const std::function<const char*(const char* name)>& valueOf) {
  const auto textOf = [&](const char* name) {
    const char* value = valueOf(name);
    return std::string(value == nullptr ? "" : value);
  };
  if (const std::string bundle = textOf("CURL_CA_BUNDLE"); !bundle.empty()) return {bundle, {}};
  return {textOf("SSL_CERT_FILE"), textOf("SSL_CERT_DIR")};
}

}  // namespace playerx::transfers
