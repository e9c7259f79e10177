#include <gtest/gtest.h>

#include "playerx/app/model/QueueChanges.h"

namespace playerx::model {
namespace {

ItemState item(unsigned int id, DownloadStatusEnumType status = DownloadStatusQueued,
               int percent = 0) {
  ItemState state;
  state.id = id;
  state.status = status;
  state.percent = percent;
  return state;
}

std::vector<QueueChange::Kind> kinds(const std::vector<QueueChange>& changes) {
  std::vector<QueueChange::Kind> list;
  for (const QueueChange& change : changes) list.push_back(change.kind);
  return list;
}

using Kinds = std::vector<QueueChange::Kind>;

TEST(QueueChangesTest, EqualQueuesHoldNoChange) {
  EXPECT_TRUE(changesBetween({item(1), item(2)}, {item(1), item(2)}).empty());
}

TEST(QueueChangesTest, AnItemSeenForTheFirstTimeIsAdded) {
  const auto changes = changesBetween({item(1)}, {item(1), item(2)});
  ASSERT_EQ(kinds(changes), Kinds{QueueChange::kAdded});
  EXPECT_EQ(changes[0].item.id, 2u);
}

TEST(QueueChangesTest, AnItemThatCameAndFailedBetweenTwoLooksIsAddedThenFailed) {
  EXPECT_EQ(kinds(changesBetween({}, {item(1, DownloadStatusFailed)})),
            (Kinds{QueueChange::kAdded, QueueChange::kFailed}));
}

TEST(QueueChangesTest, CompletionIsAFinishWhateverElseChanged) {
  EXPECT_EQ(kinds(changesBetween({item(1, DownloadStatusDownloading, 40)},
                                 {item(1, DownloadStatusCompleted, 100)})),
            Kinds{QueueChange::kFinished});
}

TEST(QueueChangesTest, MorePercentIsAChange) {
  EXPECT_EQ(kinds(changesBetween({item(1, DownloadStatusDownloading, 40)},
                                 {item(1, DownloadStatusDownloading, 41)})),
            Kinds{QueueChange::kChanged});
}

TEST(QueueChangesTest, AFinishedItemWhoseFieldsChangeDoesNotFinishAgain) {
  EXPECT_EQ(kinds(changesBetween({item(1, DownloadStatusCompleted, 99)},
                                 {item(1, DownloadStatusCompleted, 100)})),
            Kinds{QueueChange::kChanged});
}

TEST(QueueChangesTest, AnItemThatIsGoneOrMovedYieldsNothing) {
  EXPECT_TRUE(changesBetween({item(1), item(2), item(3)}, {item(3), item(1)}).empty());
}

}  // namespace
}  // namespace playerx::model
