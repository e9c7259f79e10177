#include <gmock/gmock.h>

#include "VeskPlayerX/VeskDrm.h"
#include "playerx/app/session/QueueView.h"

namespace playerx::session {
namespace {

using model::Notice;
using testing::ElementsAre;
using testing::IsEmpty;

class QueueViewTest : public testing::Test {
 protected:
  int wakes_ = 0;
  int slot_ = 3;
  std::string asked_;
  QueueView view_{[this] { ++wakes_; },
                  [this](const std::string& title) {
                    asked_ = title;
                    return slot_;
                  }};
};

TEST_F(QueueViewTest, EveryAnnouncementWakes) {
  view_.downloadListChanged();
  view_.downloadItemChanged(1);
  view_.downloadItemsAdded();
  view_.refreshItem(1);
  EXPECT_EQ(wakes_, 4);
  EXPECT_FALSE(view_.keepsRunningWhenFinished());
}

TEST_F(QueueViewTest, NoticesBelongToTheItemThatWasAnnouncedLast) {
  view_.downloadItemChanged(1);
  view_.notEnoughSpace(L"/m");
  view_.downloadItemChanged(2);
  view_.downloadUrlFailed(L"http://h");
  view_.downloadBroken(L"/m/a");
  EXPECT_THAT(view_.takeNotices(2), ElementsAre(Notice{Notice::kUrlFailed, "http://h", 0, 2},
                                                Notice{Notice::kBroken, "/m/a", 0, 2}));
  EXPECT_THAT(view_.takeNotices(2), IsEmpty());
  EXPECT_THAT(view_.takeNotices(1), ElementsAre(Notice{Notice::kNoSpace, "/m", 0, 1}));
}

TEST_F(QueueViewTest, ARefusalKeepsCodeWithDetails) {
  VeskDrmDownloadAuthorization answer;
  answer.errorCode = 7;
  answer.errorDetails = L"No.";
  view_.showAuthorizationError(answer);
  EXPECT_THAT(view_.takeNotices(0), ElementsAre(Notice{Notice::kNotAuthorized, "No.", 7, 0}));
}

TEST_F(QueueViewTest, OnlyADeclinedSlotIsANotice) {
  EXPECT_EQ(view_.chooseSlot(L"Film", {}), 3);
  EXPECT_EQ(asked_, "Film");
  EXPECT_THAT(view_.takeNotices(0), IsEmpty());
  slot_ = -1;
  EXPECT_EQ(view_.chooseSlot(L"Film", {}), -1);
  EXPECT_THAT(view_.takeNotices(0), ElementsAre(Notice{Notice::kSlotDeclined, "", 0, 0}));
}

}  // namespace
}  // namespace playerx::session
