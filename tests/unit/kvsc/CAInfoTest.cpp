#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <string>

#include "kvsc/CAInfo.h"
#include "tests/support/TempDir.h"

namespace kvsc {
namespace {

/// A file of the set that the program was built with.
std::string fileOfTheSet(const std::string& stem) {
  return support::readFile(std::filesystem::path(VESK_BUILT_CREDENTIALS) / (stem + ".pem"));
}

struct EnvironmentCase {
  const char* environment;
  const char* authority;
  const char* client;
};

void PrintTo(const EnvironmentCase& c, std::ostream* out) { *out << '"' << c.environment << '"'; }

class Environment : public testing::TestWithParam<EnvironmentCase> {};

TEST_P(Environment, GivesItsOwnTexts) {
  const CAInfo info(GetParam().environment);
  const std::string client = GetParam().client;
  EXPECT_EQ(info.getServerCert(), fileOfTheSet(GetParam().authority));
  EXPECT_EQ(info.getClientKey(), fileOfTheSet(client + "-client"));
  EXPECT_EQ(info.getClientPEM(), fileOfTheSet(client + "-key"));
}

constexpr const char* kProduction = "production-" VESK_CREDENTIALS_PLATFORM;

INSTANTIATE_TEST_SUITE_P(Names, Environment,
                         testing::Values(EnvironmentCase{"PRODUCTION", "production-ca",
                                                         kProduction},
                                         EnvironmentCase{"", "production-ca", kProduction},
                                         EnvironmentCase{"UNKNOWN", "production-ca", kProduction},
                                         EnvironmentCase{"JTEST", "production-ca", "jtest"},
                                         EnvironmentCase{"ITEST", "production-ca", "itest"},
                                         EnvironmentCase{"itest", "production-ca", "itest"},
                                         EnvironmentCase{"ETEST", "production-ca", "etest"},
                                         EnvironmentCase{"LOCALHOST", "test-ca", "localhost"},
                                         EnvironmentCase{"localhost", "test-ca", "localhost"},
                                         EnvironmentCase{"L", "test-ca", "localhost"},
                                         EnvironmentCase{"jt", "production-ca", "jtest"},
                                         EnvironmentCase{"JTESTS", "production-ca", kProduction},
                                         EnvironmentCase{"TEST", "production-ca", kProduction}));

TEST(ExpectedEnvironment, IsComparedWithoutCaseOverItsOwnLength) {
  EXPECT_TRUE(CAInfo("jtest").isExpectedEnvironment("JTEST"));
  EXPECT_TRUE(CAInfo("JTEST").isExpectedEnvironment("jTeSt"));
  EXPECT_TRUE(CAInfo("JT").isExpectedEnvironment("JTEST"));
  EXPECT_TRUE(CAInfo("JTEST").isExpectedEnvironment("JTEST and more"));
  EXPECT_FALSE(CAInfo("JTESTS").isExpectedEnvironment("JTEST"));
  EXPECT_FALSE(CAInfo("TEST").isExpectedEnvironment("JTEST"));
  EXPECT_FALSE(CAInfo("JTEST").isExpectedEnvironment(""));
}

TEST(ExpectedEnvironment, IsProductionForAnEmptyName) {
  EXPECT_TRUE(CAInfo("").isExpectedEnvironment("PRODUCTION"));
  EXPECT_FALSE(CAInfo("").isExpectedEnvironment("JTEST"));
}

TEST(ExpectedEnvironment, FoldsAsciiLettersAlone) {
  EXPECT_FALSE(CAInfo("[").isExpectedEnvironment("{"));
  EXPECT_FALSE(CAInfo("@").isExpectedEnvironment("`"));
}

}  // namespace
}  // namespace kvsc
