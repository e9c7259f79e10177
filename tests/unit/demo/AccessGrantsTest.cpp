#include <gtest/gtest.h>
#include <httplib.h>

#include "demo/AccessGrants.h"

namespace demo {
namespace {

std::string headerOf(const AccessGrants::Grant& grant) {
  return httplib::make_basic_authentication_header(grant.username, grant.password).second;
}

TEST(AccessGrantsTest, AGrantOpensItsFilmAlone) {
  AccessGrants grants;
  const std::string header = headerOf(grants.issue("a.mkv", std::chrono::hours(1)));
  EXPECT_TRUE(grants.opens(header, "a.mkv"));
  EXPECT_FALSE(grants.opens(header, "b.mkv"));
  EXPECT_FALSE(grants.opens("", "a.mkv"));
}

TEST(AccessGrantsTest, AGrantEndsWithItsLifetime) {
  AccessGrants grants;
  EXPECT_FALSE(grants.opens(headerOf(grants.issue("a.mkv", std::chrono::seconds(0))), "a.mkv"));
}

TEST(AccessGrantsTest, RevokedGrantsOpenNothing) {
  AccessGrants grants;
  const std::string header = headerOf(grants.issue("a.mkv", std::chrono::hours(1)));
  grants.revokeAll();
  EXPECT_FALSE(grants.opens(header, "a.mkv"));
}

}  // namespace
}  // namespace demo
