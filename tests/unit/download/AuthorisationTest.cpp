#include <gmock/gmock.h>

#include "download/AttachedView.h"
#include "download/Authorisation.h"
#include "tests/support/fakes/FakeServices.h"

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

TEST(Authorisation, TalksAboutACopyOfTheItem) {
  support::EventLog log;
  support::FakeServices services(log);
  AttachedView view;
  DownloadItem item;
  item.setId(7);
  item.setSlotNumber(2);
  Authorisation talk(services, view, item);
  item.setSlotNumber(9);
  talk.run();
  EXPECT_TRUE(log.has("services.authorize 7 2"));
}

TEST(Authorisation, ThatIsAbandonedAsksForNothing) {
  support::EventLog log;
  support::FakeServices services(log);
  AttachedView view;
  Authorisation talk(services, view, DownloadItem());
  talk.abandon();
  talk.run();
  EXPECT_THAT(log.lines(), IsEmpty());
  EXPECT_FALSE(talk.granted());
}

}  // namespace
}  // namespace download
