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

using Kinds = std::vector<QueueChange::Kind>;

Kinds kindsOfChanges(const ItemState* before, const ItemState& now) {
  std::vector<QueueChange> changes;
  appendChanges(changes, before, now);
  Kinds kinds;
  for (const QueueChange& change : changes) {
    EXPECT_EQ(change.item, now);
    kinds.push_back(change.kind);
  }
  return kinds;
}

Kinds kindsOfChanges(const ItemState& before, const ItemState& now) {
  return kindsOfChanges(&before, now);
}

TEST(QueueChangesTest, AnItemThatStaysAsItIsYieldsNothing) {
  EXPECT_EQ(kindsOfChanges(item(1), item(1)), Kinds{});
}

TEST(QueueChangesTest, AnItemSeenForTheFirstTimeIsAdded) {
  EXPECT_EQ(kindsOfChanges(nullptr, item(2)), Kinds{QueueChange::kAdded});
}

TEST(QueueChangesTest, AnItemThatCameAndFailedBetweenTwoLooksIsAddedThenFailed) {
  EXPECT_EQ(kindsOfChanges(nullptr, item(1, DownloadStatusFailed)),
            (Kinds{QueueChange::kAdded, QueueChange::kFailed}));
}

TEST(QueueChangesTest, CompletionIsAFinishWhateverElseChanged) {
  EXPECT_EQ(
      kindsOfChanges(item(1, DownloadStatusDownloading, 40), item(1, DownloadStatusCompleted, 100)),
      Kinds{QueueChange::kFinished});
}

TEST(QueueChangesTest, MorePercentIsAChange) {
  EXPECT_EQ(kindsOfChanges(item(1, DownloadStatusDownloading, 40),
                           item(1, DownloadStatusDownloading, 41)),
            Kinds{QueueChange::kChanged});
}

TEST(QueueChangesTest, AFinishedItemWhoseFieldsChangeDoesNotFinishAgain) {
  EXPECT_EQ(
      kindsOfChanges(item(1, DownloadStatusCompleted, 99), item(1, DownloadStatusCompleted, 100)),
      Kinds{QueueChange::kChanged});
}

}  // namespace
}  // namespace playerx::model
