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
  std::size_t authorityLength;
  std::size_t certificateLength;
  std::size_t keyLength;
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

TEST_P(Environment, HasTextsOfTheExpectedLengths) {
  const CAInfo info(GetParam().environment);
  EXPECT_EQ(info.getServerCert().size(), GetParam().authorityLength);
  EXPECT_EQ(info.getClientKey().size(), GetParam().certificateLength);
  EXPECT_EQ(info.getClientPEM().size(), GetParam().keyLength);
}

constexpr const char* kProduction = "production-" VESK_CREDENTIALS_PLATFORM;

INSTANTIATE_TEST_SUITE_P(
    Names, Environment,
    testing::Values(EnvironmentCase{"PRODUCTION", "production-ca", kProduction, 1509, 1367, 1674},
                    EnvironmentCase{"", "production-ca", kProduction, 1509, 1367, 1674},
                    EnvironmentCase{"UNKNOWN", "production-ca", kProduction, 1509, 1367, 1674},
                    EnvironmentCase{"JTEST", "production-ca", "jtest", 1509, 1375, 1675},
                    EnvironmentCase{"ITEST", "production-ca", "itest", 1509, 1375, 1675},
                    EnvironmentCase{"itest", "production-ca", "itest", 1509, 1375, 1675},
                    EnvironmentCase{"ETEST", "production-ca", "etest", 1509, 1375, 1675},
                    EnvironmentCase{"LOCALHOST", "test-ca", "localhost", 1359, 1379, 1679},
                    EnvironmentCase{"localhost", "test-ca", "localhost", 1359, 1379, 1679},
                    EnvironmentCase{"L", "test-ca", "localhost", 1359, 1379, 1679},
                    EnvironmentCase{"jt", "production-ca", "jtest", 1509, 1375, 1675},
                    EnvironmentCase{"JTESTS", "production-ca", kProduction, 1509, 1367, 1674},
                    EnvironmentCase{"TEST", "production-ca", kProduction, 1509, 1367, 1674}));

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

TEST(ExpectedEnvironment, EndsAtAZeroByteInBothNames) {
  const CAInfo info(std::string("JTEST\0x", 7));
  EXPECT_TRUE(info.isExpectedEnvironment("JTEST"));
  EXPECT_FALSE(info.isExpectedEnvironment("JTEST and more"));
  EXPECT_EQ(info.getClientPEM(), CAInfo("JTEST").getClientPEM());
}

TEST(ExpectedEnvironment, FoldsAsciiLettersAlone) {
  EXPECT_FALSE(CAInfo("[").isExpectedEnvironment("{"));
  EXPECT_FALSE(CAInfo("@").isExpectedEnvironment("`"));
}

}  // namespace
}  // namespace kvsc
