#include <gtest/gtest.h>

#include "tests/support/DevelopmentPki.h"

namespace support {
namespace {

TEST(DevelopmentPkiTest, EveryClientIsSignedByItsEnvironmentsAuthority) {
  for (const char* environment : {"PRODUCTION", "JTEST", "ITEST", "ETEST", "LOCALHOST"}) {
    const Identity client = development::clientOf(environment);
    const Identity authority = development::authorityOf(environment);
    EXPECT_EQ(X509_verify(client.certificate.get(), authority.key.get()), 1) << environment;
    EXPECT_EQ(X509_check_private_key(client.certificate.get(), client.key.get()), 1);
    EXPECT_EQ(X509_check_private_key(authority.certificate.get(), authority.key.get()), 1);
  }
}

}  // namespace
}  // namespace support
