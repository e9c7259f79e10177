#include <gtest/gtest.h>

#include "playerx/app/reasons/WebAddress.h"

namespace playerx {
namespace {

TEST(WebAddressTest, PortsRunFrom1To65535) {
  for (const char* address : {"http://h:0/", "http://h:65536/a", "http://h:99999", "http://h:x/",
                              "http://h:99999999999999/", "http://[::1]:0/", "http://h:-1/"}) {
    EXPECT_TRUE(hasBadPort(address)) << address;
  }
  for (const char* address : {"http://h/", "http://h:1/", "http://h:65535/a:0", "http://h:/",
                              "http://[::1]/", "http://[::1]:80/", "h:0", "http://h?a:0"}) {
    EXPECT_FALSE(hasBadPort(address)) << address;
  }
}

TEST(WebAddressTest, OnlyWebAddressesHaveFaultsOfTheirOwn) {
  for (const char* address : {"", "http", "ftp://h/a b", "http://h/a%20b", "HTTPS://h:443/a"}) {
    EXPECT_EQ(faultOfAddress(address), "") << address;
  }
  for (const char* address : {"http://h/a b", "HTTP://h/a\tb", "https://h:0/a"}) {
    EXPECT_NE(faultOfAddress(address), "") << address;
  }
}

}  // namespace
}  // namespace playerx
