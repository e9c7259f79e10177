#include "tests/support/DevelopmentPki.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace support::development {
namespace {

const std::filesystem::path kFolder = VESK_DEVELOPMENT_CREDENTIALS;

Identity authorityNamed(const std::string& name) {
  return pki::fromFiles(kFolder / (name + "-ca.pem"),
                        kFolder / "authority-keys" / (name + "-ca-key.pem"));
}

// PRODUCTION has a pair for each platform; the tests run on one.
std::string fileStemOf(std::string environment) {
  if (environment == "PRODUCTION") return "production-linux";
  std::transform(environment.begin(), environment.end(), environment.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return environment;
}

}  // namespace

Identity productionAuthority() { return authorityNamed("production"); }
Identity testAuthority() { return authorityNamed("test"); }

Identity authorityOf(const std::string& environment) {
  return environment == "LOCALHOST" ? testAuthority() : productionAuthority();
}

Identity clientOf(const std::string& environment) {
  const std::string stem = fileStemOf(environment);
  return pki::fromFiles(kFolder / (stem + "-client.pem"), kFolder / (stem + "-key.pem"));
}

}  // namespace support::development
