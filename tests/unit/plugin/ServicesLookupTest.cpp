#include <gtest/gtest.h>

#include "VeskPlayerX/InterfaceIds.h"
#include "VeskPlayerX/PlayerInterface.h"
#include "plugin/ServicesLookup.h"
#include "tests/support/fakes/FakeContext.h"
#include "tests/support/fakes/FakePlayer.h"
#include "tests/support/fakes/FakeServices.h"

namespace plugin {
namespace {

using VeskPlayerX::DIN_Player;
using VeskPlayerX::DIN_ZPSServices;

class ServicesLookupTest : public ::testing::Test {
 protected:
  support::EventLog log_;
  support::FakeContext context_;
  support::FakeServices services_{log_};
  support::FakePlayer player_{log_};
};

TEST_F(ServicesLookupTest, AServiceIsHeldAsLongAsItsHelperLives) {
  context_.offer<VeskPlayerX::PlayerInterface>(DIN_Player, &player_);
  {
    KPIM::Helper<VeskPlayerX::PlayerInterface> helper(DIN_Player);
    EXPECT_TRUE(loadService(helper, &context_, DIN_Player));
    EXPECT_EQ(helper.get(), &player_);
    EXPECT_EQ(context_.holds(DIN_Player), 1);
  }
  EXPECT_EQ(context_.holds(DIN_Player), 0);
  EXPECT_FALSE(context_.wasAskedNotToLoad());
  EXPECT_FALSE(context_.wasAskedToChooseOtherwise());
}

TEST_F(ServicesLookupTest, AServiceThatNobodyOffersIsNotThere) {
  KPIM::Helper<VeskPlayerX::PlayerInterface> helper(DIN_Player);
  EXPECT_FALSE(loadService(helper, &context_, DIN_Player));
}

TEST_F(ServicesLookupTest, TheOnlineServicesAreLookedUpOnceAndKept) {
  context_.offer<VeskPlayerX::ZPSServicesInterface>(DIN_ZPSServices, &services_);
  {
    ServicesLookup online(&context_);
    EXPECT_EQ(context_.holds(DIN_ZPSServices), 0) << "not before they are needed";
    ASSERT_NE(online.find(), nullptr);
    EXPECT_EQ(online.find()->get(), &services_);
    EXPECT_EQ(context_.lookups(DIN_ZPSServices), 1);
    EXPECT_EQ(context_.holds(DIN_ZPSServices), 1);
  }
  EXPECT_EQ(context_.holds(DIN_ZPSServices), 0);
}

TEST_F(ServicesLookupTest, OnlineServicesThatWereNotThereAreLookedUpAnew) {
  ServicesLookup online(&context_);
  EXPECT_EQ(online.find(), nullptr);
  context_.offer<VeskPlayerX::ZPSServicesInterface>(DIN_ZPSServices, &services_);
  context_.answer(DIN_ZPSServices, KPIM::kLoadFailed);
  EXPECT_EQ(online.find(), nullptr);
  context_.answer(DIN_ZPSServices, KPIM::kSuccess);
  EXPECT_NE(online.find(), nullptr);
}

}  // namespace
}  // namespace plugin
