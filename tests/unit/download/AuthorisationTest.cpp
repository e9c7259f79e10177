#include <gmock/gmock.h>

#include "VeskPlayerX/InterfaceIds.h"
#include "download/Authorisation.h"
#include "download/RunState.h"
#include "item/DownloadItem.h"
#include "tests/support/fakes/FakeContext.h"
#include "tests/support/fakes/FakeManager.h"
#include "tests/support/fakes/FakeServices.h"
#include "tests/support/fakes/FakeView.h"

namespace download {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(AfterRefusal, DependsOnTheErrorAndOnWhetherTheUserWasAsked) {
  EXPECT_EQ(afterRefusal(5000, true), AfterRefusal::kServicesShow);
  EXPECT_EQ(afterRefusal(5000, false), AfterRefusal::kServicesShow);
  EXPECT_EQ(afterRefusal(32054, true), AfterRefusal::kAskForSlot);
  EXPECT_EQ(afterRefusal(32054, false), AfterRefusal::kViewShows);
  EXPECT_EQ(afterRefusal(0, true), AfterRefusal::kViewShows);
  EXPECT_EQ(afterRefusal(-1, true), AfterRefusal::kViewShows);
}

TEST(DecodeRights, YieldsTheBytesOfTheText) {
  EXPECT_THAT(decodeRights("-_8="), ElementsAre(0xFB, 0xFF));
  EXPECT_THAT(decodeRights("AAAA"), ElementsAre(0, 0, 0));
}

TEST(DecodeRights, YieldsNothingForATextOfAnotherLength) {
  EXPECT_THAT(decodeRights(""), IsEmpty());
  EXPECT_THAT(decodeRights("abc"), IsEmpty());
}

class AuthorisationTest : public testing::Test {
 protected:
  AuthorisationTest() {
    context_.offer<VeskPlayerX::ZPSServicesInterface>(VeskPlayerX::DIN_ZPSServices, &services_);
    host_.setInterfaces(&manager_, &view_);
    run_.begin();
    item_->setId(7);
  }

  ~AuthorisationTest() override { run_.end(); }

  void allow() {
    VeskDrmDownloadAuthorization answer;
    answer.success = true;
    answer.ticketId = 42;
    services_.setAnswers({answer});
  }

  support::EventLog log_;
  support::FakeServices services_{log_};
  support::FakeManager manager_{log_};
  support::FakeView view_{log_};
  support::FakeContext context_;
  Host host_{&context_};
  RunState run_;
  std::shared_ptr<DownloadItem> item_ = std::make_shared<DownloadItem>();
  Authorisation authorisation_{host_, run_};
};

TEST_F(AuthorisationTest, AsksTheServicesAboutTheVeryItem) {
  allow();
  const auto answer = authorisation_.request(item_);
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->ticketId, 42);
  EXPECT_TRUE(item_->getTicketAlreadyTorn());
}

TEST_F(AuthorisationTest, HasNoAnswerWithoutAContext) {
  Host nowhere(nullptr);
  Authorisation authorisation(nowhere, run_);
  EXPECT_FALSE(authorisation.request(item_));
}

TEST_F(AuthorisationTest, ReleasesServicesAndItem) {
  allow();
  authorisation_.request(item_);
  EXPECT_EQ(context_.holds(VeskPlayerX::DIN_ZPSServices), 0);
  EXPECT_EQ(item_.use_count(), 1);
}

}  // namespace
}  // namespace download
