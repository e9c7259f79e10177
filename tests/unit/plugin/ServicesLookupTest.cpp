#include <gtest/gtest.h>

#include "VeskPlayerX/InterfaceIds.h"
#include "plugin/ServicesLookup.h"
#include "tests/support/fakes/FakeContext.h"
#include "tests/support/fakes/FakeServices.h"

namespace plugin {
namespace {

using VeskPlayerX::DIN_ZPSServices;

class ServicesLookupTest : public ::testing::Test {
 protected:
  support::EventLog log_;
  support::FakeContext context_;
  support::FakeServices services_{log_};
};

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
  EXPECT_FALSE(context_.wasAskedNotToLoad());
  EXPECT_FALSE(context_.wasAskedToChooseOtherwise());
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
