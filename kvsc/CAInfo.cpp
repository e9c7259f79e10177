#include "kvsc/CAInfo.h"

#include <strings.h>

#include <array>
#include <utility>

#include "kvsc/CredentialText.h"

namespace kvsc {

/// One kind of text for each environment.
struct CAInfo::Material {
  const MaskedText& production;
  const MaskedText& jtest;
  const MaskedText& itest;
  const MaskedText& etest;
  const MaskedText& localhost;
};

CAInfo::CAInfo(std::string environment)
    : environment_(environment.empty() ? "PRODUCTION" : std::move(environment)) {}

bool CAInfo::isExpectedEnvironment(std::string name) const {
  return strncasecmp(environment_.c_str(), name.c_str(), environment_.size()) == 0;
}

std::string CAInfo::getServerCert() const {
  using namespace credentials;
  return textOf({kProductionCa, kProductionCa, kProductionCa, kProductionCa, kTestCa});
}

std::string CAInfo::getClientKey() const {
  using namespace credentials;
  return textOf({kProductionClient, kJtestClient, kItestClient, kEtestClient, kLocalhostClient});
}

std::string CAInfo::getClientPEM() const {
  using namespace credentials;
  return textOf({kProductionKey, kJtestKey, kItestKey, kEtestKey, kLocalhostKey});
}

/// The last environment that matches wins; without a match it is production.
std::string CAInfo::textOf(const Material& material) const {
  const std::array<std::pair<const char*, const MaskedText*>, 4> others = {{
      {"JTEST", &material.jtest},
      {"ITEST", &material.itest},
      {"ETEST", &material.etest},
      {"LOCALHOST", &material.localhost},
  }};
  CredentialText text;
  text.produce(material.production);
  for (const auto& [name, masked] : others) {
    if (isExpectedEnvironment(name)) text.produce(*masked);
  }
  return text.text();
}

}  // namespace kvsc
