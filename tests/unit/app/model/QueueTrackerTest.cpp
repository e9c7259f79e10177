#include <gmock/gmock.h>

#include "playerx/app/model/QueueTracker.h"
#include "tests/unit/app/FakeModule.h"

namespace playerx::model {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A queue that is looked at now and then.
class QueueTrackerTest : public testing::Test {
 protected:
  std::vector<QueueChange::Kind> kindsOfChanges() {
    std::vector<QueueChange::Kind> kinds;
    news_ = tracker_.update();
    for (const QueueChange& change : news_.changes) kinds.push_back(change.kind);
    return kinds;
  }

  void expectTheSameAsANewSnapshot() {
    EXPECT_EQ(tracker_.queue(), snapshotOf(module_));
    expectCounted(tracker_);
  }

  static void expectCounted(const QueueTracker& tracker) {
    const auto& queue = tracker.queue();
    EXPECT_EQ(std::ssize(queue) - std::count_if(queue.begin(), queue.end(), hasEnded),
              static_cast<std::ptrdiff_t>(tracker.unfinished()));
  }

  static bool hasEnded(const ItemState& item) { return !isUnfinished(item.status); }

  support::EventLog log_;
  FakeModule module_{log_};
  QueueTracker tracker_{module_};
  QueueTracker::News news_;
};

TEST_F(QueueTrackerTest, TellsAnItemThatCameAndFailedBetweenTwoLooks) {
  module_.put("http://h/a.avi", DownloadStatusFailed);
  EXPECT_THAT(kindsOfChanges(), ElementsAre(QueueChange::kAdded, QueueChange::kFailed));
  EXPECT_THAT(kindsOfChanges(), IsEmpty());
  expectTheSameAsANewSnapshot();
}

TEST_F(QueueTrackerTest, AnItemThatArrivesWhileItIsCalledQueuedIsDownloaded) {
  bool isArriving = true;
  QueueTracker tracker(module_, [&](const ItemState&) { return isArriving; });
  module_.put("http://h/b.avi");
  DownloadItem& item = module_.put("http://h/a.avi", DownloadStatusDownloading);
  tracker.update();
  item.setStatus(DownloadStatusQueued);
  EXPECT_THAT(tracker.update().changes, IsEmpty());
  EXPECT_EQ(tracker.queue()[0].status, DownloadStatusQueued) << "was never downloaded";
  EXPECT_EQ(tracker.queue()[1].status, DownloadStatusDownloading);
  isArriving = false;
  EXPECT_EQ(tracker.update().changes.size(), 1U);
  EXPECT_EQ(tracker.queue()[1].status, DownloadStatusQueued);
  EXPECT_THAT(tracker.update().changes, IsEmpty());
}

TEST_F(QueueTrackerTest, TellsTheEndOfAFilmBeforeTheStartOfTheNext) {
  DownloadItem& first = module_.put("http://h/a.avi", DownloadStatusDownloading);
  DownloadItem& second = module_.put("http://h/b.avi");
  kindsOfChanges();
  first.setStatus(DownloadStatusCompleted);
  module_.moveToEnd(0);
  second.setStatus(DownloadStatusDownloading);
  EXPECT_THAT(kindsOfChanges(), ElementsAre(QueueChange::kFinished, QueueChange::kChanged));
  EXPECT_EQ(news_.changes[0].item.url, "http://h/a.avi");
  expectTheSameAsANewSnapshot();
}

TEST_F(QueueTrackerTest, AnEndDuringALookDoesNotComeBeforeAnEarlierOne) {
  DownloadItem& first = module_.put("http://h/a.avi", DownloadStatusDownloading);
  kindsOfChanges();
  DownloadItem& second = module_.put("http://h/b.avi");
  module_.atNextCopy([&] {
    first.setStatus(DownloadStatusCompleted);
    second.setStatus(DownloadStatusCompleted);
  });
  EXPECT_THAT(kindsOfChanges(), ElementsAre(QueueChange::kAdded));
  EXPECT_THAT(kindsOfChanges(), ElementsAre(QueueChange::kFinished, QueueChange::kFinished));
  EXPECT_EQ(news_.changes[0].item.url, "http://h/a.avi");
  expectTheSameAsANewSnapshot();
}

TEST_F(QueueTrackerTest, NoticesEveryFieldThatChanges) {
  DownloadItem& item = module_.put("http://h/a.avi");
  kindsOfChanges();
  const std::vector<std::function<void()>> changes = {
      [&] { item.setTitle(L"A film"); },
      [&] { item.setTitle(L"A f\u00EFlm"); },
      [&] { item.setContentProviderDisplayName(L"h"); },
      [&] { item.setUrl(L"http://h/b.avi"); },
      [&] { item.setPath(L"/films/b.avi"); },
      [&] { item.setPercentDownloaded(1); },
      [&] { item.setSize(1); },
      [&] { item.setReadyForProgressivePlayback(true); },
      [&] { item.setTicket("ticket"); },
      [&] { item.setStatus(DownloadStatusDownloading); },
  };
  for (const auto& change : changes) {
    change();
    EXPECT_THAT(kindsOfChanges(), ElementsAre(QueueChange::kChanged));
    EXPECT_THAT(kindsOfChanges(), IsEmpty());
    expectTheSameAsANewSnapshot();
  }
}

TEST_F(QueueTrackerTest, FollowsItemsThatComeGoAndMoveAtOnce) {
  for (const char* const url : {"http://h/a", "http://h/b", "http://h/c", "http://h/d"}) {
    module_.put(url);
  }
  kindsOfChanges();
  module_.moveToEnd(1);
  module_.drop(1);
  module_.put("http://h/e");
  module_.all()[0]->setPercentDownloaded(5);
  EXPECT_THAT(kindsOfChanges(), ElementsAre(QueueChange::kChanged, QueueChange::kAdded));
  EXPECT_EQ(news_.changes[1].item.url, "http://h/e");
  ASSERT_EQ(news_.removed.size(), 1u);
  EXPECT_EQ(news_.removed[0].url, "http://h/c");
  expectTheSameAsANewSnapshot();
}

TEST_F(QueueTrackerTest, AsksForTheItemsThatHaveChangedOnly) {
  module_.put("http://h/a");
  DownloadItem& changed = module_.put("http://h/b");
  kindsOfChanges();
  module_.copied.clear();
  changed.setPercentDownloaded(1);
  module_.moveToEnd(0);
  kindsOfChanges();
  EXPECT_THAT(module_.copied, ElementsAre(changed.getId()));
}

TEST_F(QueueTrackerTest, AnItemThatIsRemovedAfterTheLookIsToldByTheNext) {
  const unsigned int id = module_.put("http://h/a").getId();
  kindsOfChanges();
  module_.put("http://h/b");
  module_.atNextCopy([this] { module_.drop(1); });
  EXPECT_THAT(kindsOfChanges(), IsEmpty());
  EXPECT_THAT(kindsOfChanges(), IsEmpty());
  EXPECT_THAT(news_.removed, IsEmpty()) << "it was never told";
  ASSERT_EQ(tracker_.queue().size(), 1u);
  EXPECT_EQ(tracker_.queue()[0].id, id);
  expectCounted(tracker_);
}

TEST_F(QueueTrackerTest, CountsAnItemWhoseOutcomeIsExpectedAsUnfinished) {
  const unsigned int id = module_.put("http://h/a", DownloadStatusFailed).getId();
  module_.put("http://h/b", DownloadStatusCompleted);
  kindsOfChanges();
  EXPECT_EQ(tracker_.unfinished(), 0u);
  tracker_.expectOutcome(id);
  tracker_.expectOutcome(id);
  EXPECT_EQ(tracker_.unfinished(), 1u);
  module_.drop(0);
  kindsOfChanges();
  EXPECT_EQ(tracker_.unfinished(), 0u);
}

TEST_F(QueueTrackerTest, WhatItFindsAtItsBeginningIsNoNews) {
  module_.put("http://h/a", DownloadStatusFailed);
  QueueTracker tracker(module_);
  EXPECT_EQ(tracker.queue(), snapshotOf(module_));
  expectCounted(tracker);
  const QueueTracker::News news = tracker.update();
  EXPECT_THAT(news.changes, IsEmpty());
  EXPECT_FALSE(news.isRearranged);
}

TEST_F(QueueTrackerTest, TellsWhetherTheOrderIsAnother) {
  DownloadItem& item = module_.put("http://h/a");
  module_.put("http://h/b");
  kindsOfChanges();
  EXPECT_TRUE(news_.isRearranged);
  item.setPercentDownloaded(1);
  kindsOfChanges();
  EXPECT_FALSE(news_.isRearranged);
  module_.moveToEnd(0);
  kindsOfChanges();
  EXPECT_TRUE(news_.isRearranged);
  module_.drop(1);
  kindsOfChanges();
  EXPECT_TRUE(news_.isRearranged);
}

TEST_F(QueueTrackerTest, FollowsEveryOrderOfItsItems) {
  for (const char* const url : {"http://h/a", "http://h/b", "http://h/c", "http://h/d"}) {
    module_.put(url);
  }
  kindsOfChanges();
  for (const std::size_t moved : {0, 2, 1, 0, 0, 1, 2, 2, 1, 0}) {
    module_.moveToEnd(moved);
    if (moved == 2) module_.moveToEnd(0);
    EXPECT_THAT(kindsOfChanges(), IsEmpty());
    EXPECT_THAT(news_.removed, IsEmpty());
    expectTheSameAsANewSnapshot();
  }
}

TEST_F(QueueTrackerTest, AnItemMayMoveToTheEndWhileItChangesAndAnotherComes) {
  DownloadItem& first = module_.put("http://h/a");
  module_.put("http://h/b");
  module_.put("http://h/c");
  kindsOfChanges();
  first.setStatus(DownloadStatusCompleted);
  module_.moveToEnd(0);
  EXPECT_THAT(kindsOfChanges(), ElementsAre(QueueChange::kFinished));
  expectTheSameAsANewSnapshot();
  module_.moveToEnd(0);
  module_.put("http://h/d");
  EXPECT_THAT(kindsOfChanges(), ElementsAre(QueueChange::kAdded));
  expectTheSameAsANewSnapshot();
}

TEST_F(QueueTrackerTest, ANewPlaceIsNoChange) {
  for (const char* const url : {"http://h/a", "http://h/b", "http://h/c"}) module_.put(url);
  kindsOfChanges();
  module_.moveToEnd(0);
  EXPECT_THAT(kindsOfChanges(), IsEmpty());
  EXPECT_THAT(news_.removed, IsEmpty());
  expectTheSameAsANewSnapshot();
}

TEST_F(QueueTrackerTest, AQueueThatIsEmptiedHasNoItem) {
  module_.put("http://h/a");
  kindsOfChanges();
  module_.drop(0);
  EXPECT_THAT(kindsOfChanges(), IsEmpty());
  EXPECT_EQ(news_.removed.size(), 1u);
  EXPECT_THAT(tracker_.queue(), IsEmpty());
}

}  // namespace
}  // namespace playerx::model
