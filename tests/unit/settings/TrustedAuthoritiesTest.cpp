#include <gtest/gtest.h>

#include <map>

#include "playerx/settings/TrustedAuthorities.h"

namespace playerx {
namespace {

TrustedAuthorities trustOf(const std::map<std::string, std::string>& environment) {
  return authoritiesOfEnvironment([&](const char* name) -> const char* {
    const auto found = environment.find(name);
    return found == environment.end() ? nullptr : found->second.c_str();
  });
}

TEST(TrustedAuthoritiesTest, FollowTheVariablesThatAreCustomary) {
  using Trust = TrustedAuthorities;
  EXPECT_EQ(trustOf({}), Trust{});
  EXPECT_EQ(trustOf({{"SSL_CERT_FILE", "/f"}}), (Trust{"/f", ""}));
  EXPECT_EQ(trustOf({{"SSL_CERT_DIR", "/d"}}), (Trust{"", "/d"}));
  EXPECT_EQ(trustOf({{"SSL_CERT_FILE", "/f"}, {"SSL_CERT_DIR", "/d"}}), (Trust{"/f", "/d"}));
  EXPECT_EQ(trustOf({{"CURL_CA_BUNDLE", "/b"}, {"SSL_CERT_FILE", "/f"}}), (Trust{"/b", ""}));
  EXPECT_EQ(trustOf({{"CURL_CA_BUNDLE", ""}, {"SSL_CERT_FILE", "/f"}}), (Trust{"/f", ""}));
}

}  // namespace
}  // namespace playerx
