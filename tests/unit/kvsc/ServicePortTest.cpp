#include <gtest/gtest.h>

#include "kvsc/ServicePort.h"

namespace kvsc {
namespace {

TEST(ServicePortTest, DigitsAreTheNumber) {
  EXPECT_EQ(servicePort("1"), 1);
  EXPECT_EQ(servicePort("8443"), 8443);
  EXPECT_EQ(servicePort("08443"), 8443);
  EXPECT_EQ(servicePort("65535"), 65535);
}

TEST(ServicePortTest, TheSchemesAreServiceNames) {
  EXPECT_EQ(servicePort("http"), 80);
  EXPECT_EQ(servicePort("https"), 443);
}

TEST(ServicePortTest, ANumberEndsAtTheFirstOtherCharacter) {
  EXPECT_EQ(servicePort("8443x"), 8443);
  EXPECT_EQ(servicePort("80 "), 80);
  EXPECT_EQ(servicePort("8.0"), 8);
}

TEST(ServicePortTest, BlanksAndAPlusMayComeFirst) {
  EXPECT_EQ(servicePort(" 80"), 80);
  EXPECT_EQ(servicePort("+80"), 80);
  EXPECT_EQ(servicePort("\t +80"), 80);
}

TEST(ServicePortTest, EverythingElseIsNoPort) {
  for (const char* text : {"", "0", "-5", "65536", "4294967376", "99999999999999999999", "0x50",
                           " ", "+", "+-80", "x80", "no such service", "HTTPS!"}) {
    EXPECT_EQ(servicePort(text), std::nullopt) << text;
  }
}

TEST(ServicePortTest, AZeroByteIsNotTheEndOfTheName) {
  EXPECT_EQ(servicePort(std::string("https\0", 6)), std::nullopt);
  EXPECT_EQ(servicePort(std::string("80\0", 3)), std::nullopt);
}

}  // namespace
}  // namespace kvsc
