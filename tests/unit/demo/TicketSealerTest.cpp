#include <gtest/gtest.h>

#include "demo/TicketSealer.h"

namespace demo {
namespace {

class TicketSealerTest : public testing::Test {
 protected:
  const TicketSealer sealer{TicketSealer::randomKey()};
};

TEST_F(TicketSealerTest, WhatWasSealedOpensAgain) {
  for (const std::string& text : {std::string(), std::string("a"), std::string(5000, '\0')}) {
    EXPECT_EQ(sealer.open(sealer.seal(text)), text);
  }
}

TEST_F(TicketSealerTest, NobodyElseOpensIt) {
  const TicketSealer other(TicketSealer::randomKey());
  EXPECT_EQ(other.open(sealer.seal("film")), std::nullopt);
}

TEST_F(TicketSealerTest, AChangeAtAnyPlaceIsNoticed) {
  const std::string sealed = sealer.seal("film");
  for (std::size_t i = 0; i < sealed.size(); ++i) {
    std::string changed = sealed;
    changed[i] = changed[i] == 'A' ? 'B' : 'A';
    EXPECT_EQ(sealer.open(changed), std::nullopt) << i;
    EXPECT_EQ(sealer.open(sealed.substr(0, i)), std::nullopt) << i;
  }
}

TEST_F(TicketSealerTest, TheSameTextNeverLooksTheSame) {
  EXPECT_NE(sealer.seal("film"), sealer.seal("film"));
}

TEST(DemoBase64Test, TheAlphabetIsTheUrlSafeOne) {
  EXPECT_EQ(encodeBase64("\xFB\xFF"), "-_8=");
  EXPECT_EQ(decodeBase64("-_8="), "\xFB\xFF");
  EXPECT_EQ(decodeBase64(encodeBase64("f")), "f");
  EXPECT_EQ(decodeBase64(""), "");
  EXPECT_EQ(decodeBase64("abc"), std::nullopt);
  EXPECT_EQ(decodeBase64("ab*="), std::nullopt);
}

}  // namespace
}  // namespace demo
