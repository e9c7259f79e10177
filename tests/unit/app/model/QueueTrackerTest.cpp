#include <gmock/gmock.h>

#include <array>
#include <random>

#include "playerx/app/model/QueueTracker.h"
#include "tests/unit/app/FakeModule.h"

namespace playerx::model {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A queue that is looked at now and then.
class QueueTrackerTest : public testing::TestWithParam<QueueTracker::Keep> {
 protected:
  std::vector<QueueChange::Kind> kindsOfChanges() {
    std::vector<QueueChange::Kind> kinds;
    news_ = tracker_.update();
    for (const QueueChange& change : news_.changes) kinds.push_back(change.kind);
    return kinds;
  }

  void expectTheSameAsANewSnapshot() {
    EXPECT_EQ(tracker_.all(), snapshotOf(module_));
    expectCounted(tracker_);
  }

  static void expectCounted(const QueueTracker& tracker) {
    const std::vector<ItemState> queue = tracker.all();
    EXPECT_EQ(std::count_if(queue.begin(), queue.end(), isStillUnfinished),
              static_cast<std::ptrdiff_t>(tracker.unfinished()));
    EXPECT_EQ(tracker.progress(true), progressOf(queue, true));
    EXPECT_EQ(tracker.size(), queue.size());
    std::vector<ItemState> kept = queue;
    if (GetParam() != QueueTracker::Keep::kAll) std::erase_if(kept, isComplete);
    EXPECT_EQ(tracker.kept(), kept);
    for (std::size_t place = 0; place < queue.size(); ++place) {
      EXPECT_EQ(tracker.at(place), queue[place]);
      EXPECT_EQ(tracker.find(queue[place].id), queue[place]);
      EXPECT_EQ(tracker.placeOf(queue[place].id), place);
    }
    EXPECT_FALSE(tracker.at(queue.size()));
  }

  static bool isStillUnfinished(const ItemState& item) { return isUnfinished(item.status); }
  static bool isComplete(const ItemState& item) { return item.status == DownloadStatusCompleted; }

  support::EventLog log_;
  FakeModule module_{log_};
  QueueTracker tracker_{module_, GetParam()};
  QueueTracker::News news_;
};

TEST_P(QueueTrackerTest, TellsAnItemThatCameAndFailedBetweenTwoLooks) {
  module_.put("http://h/a.avi", DownloadStatusFailed);
  EXPECT_THAT(kindsOfChanges(), ElementsAre(QueueChange::kAdded, QueueChange::kFailed));
  EXPECT_THAT(kindsOfChanges(), IsEmpty());
  expectTheSameAsANewSnapshot();
}

TEST_P(QueueTrackerTest, AnItemThatArrivesWhileItIsCalledQueuedIsDownloaded) {
  bool isArriving = true;
  QueueTracker tracker(module_, GetParam(), [&](const ItemState&) { return isArriving; });
  module_.put("http://h/b.avi");
  DownloadItem& item = module_.put("http://h/a.avi", DownloadStatusDownloading);
  tracker.update();
  item.setStatus(DownloadStatusQueued);
  EXPECT_THAT(tracker.update().changes, IsEmpty());
  EXPECT_EQ(tracker.kept()[0].status, DownloadStatusQueued) << "was never downloaded";
  EXPECT_EQ(tracker.kept()[1].status, DownloadStatusDownloading);
  isArriving = false;
  EXPECT_EQ(tracker.update().changes.size(), 1U);
  EXPECT_EQ(tracker.kept()[1].status, DownloadStatusQueued);
  EXPECT_THAT(tracker.update().changes, IsEmpty());
}

TEST_P(QueueTrackerTest, TellsTheEndOfAFilmBeforeTheStartOfTheNext) {
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

TEST_P(QueueTrackerTest, AnEndDuringALookDoesNotComeBeforeAnEarlierOne) {
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

TEST_P(QueueTrackerTest, NoticesEveryFieldThatChanges) {
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

TEST_P(QueueTrackerTest, FollowsItemsThatComeGoAndMoveAtOnce) {
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

TEST_P(QueueTrackerTest, AsksForTheItemsThatHaveChangedOnly) {
  module_.put("http://h/a");
  DownloadItem& changed = module_.put("http://h/b");
  kindsOfChanges();
  module_.copied.clear();
  changed.setPercentDownloaded(1);
  module_.moveToEnd(0);
  kindsOfChanges();
  EXPECT_THAT(module_.copied, ElementsAre(changed.getId()));
}

TEST_P(QueueTrackerTest, AnItemThatIsRemovedAfterTheLookIsToldByTheNext) {
  const unsigned int id = module_.put("http://h/a").getId();
  kindsOfChanges();
  module_.put("http://h/b");
  module_.atNextCopy([this] { module_.drop(1); });
  EXPECT_THAT(kindsOfChanges(), IsEmpty());
  EXPECT_THAT(kindsOfChanges(), IsEmpty());
  EXPECT_THAT(news_.removed, IsEmpty()) << "it was never told";
  ASSERT_EQ(tracker_.size(), 1u);
  EXPECT_EQ(tracker_.kept()[0].id, id);
  expectCounted(tracker_);
}

TEST_P(QueueTrackerTest, CountsAnItemWhoseOutcomeIsExpectedAsUnfinished) {
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

TEST_P(QueueTrackerTest, WhatItFindsAtItsBeginningIsNoNews) {
  module_.put("http://h/a", DownloadStatusFailed);
  QueueTracker tracker(module_, GetParam());
  EXPECT_EQ(tracker.all(), snapshotOf(module_));
  expectCounted(tracker);
  const QueueTracker::News news = tracker.update();
  EXPECT_THAT(news.changes, IsEmpty());
  EXPECT_FALSE(news.isRearranged);
}

TEST_P(QueueTrackerTest, TellsWhetherTheOrderIsAnother) {
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

TEST_P(QueueTrackerTest, FollowsEveryOrderOfItsItems) {
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

TEST_P(QueueTrackerTest, AnItemMayMoveToTheEndWhileItChangesAndAnotherComes) {
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

TEST_P(QueueTrackerTest, ANewPlaceIsNoChange) {
  for (const char* const url : {"http://h/a", "http://h/b", "http://h/c"}) module_.put(url);
  kindsOfChanges();
  module_.moveToEnd(0);
  EXPECT_THAT(kindsOfChanges(), IsEmpty());
  EXPECT_THAT(news_.removed, IsEmpty());
  expectTheSameAsANewSnapshot();
}

TEST_P(QueueTrackerTest, AQueueThatIsEmptiedHasNoItem) {
  module_.put("http://h/a");
  kindsOfChanges();
  module_.drop(0);
  EXPECT_THAT(kindsOfChanges(), IsEmpty());
  EXPECT_EQ(news_.removed.size(), 1u);
  EXPECT_THAT(tracker_.all(), IsEmpty());
}

TEST_P(QueueTrackerTest, FollowsCompleteFilmsThatMoveChangeAndGo) {
  for (const char* const url : {"http://h/a", "http://h/b", "http://h/c", "http://h/d"}) {
    module_.put(url, DownloadStatusCompleted).setSize(500);
  }
  module_.put("http://h/e");
  kindsOfChanges();
  const unsigned int gone = module_.all()[2]->getId();
  module_.drop(2);
  module_.moveToEnd(0);
  module_.all()[0]->setPath(L"/films/b");
  module_.all()[2]->setStatus(DownloadStatusCompleted);
  EXPECT_THAT(kindsOfChanges(), ElementsAre(QueueChange::kChanged, QueueChange::kFinished));
  EXPECT_EQ(news_.changes[0].item.path, "/films/b");
  ASSERT_EQ(news_.removed.size(), 1u);
  EXPECT_EQ(news_.removed[0].id, gone);
  EXPECT_EQ(news_.removed[0].status, DownloadStatusCompleted);
  EXPECT_EQ(news_.removed[0].size, 500u);
  expectTheSameAsANewSnapshot();
}

TEST_P(QueueTrackerTest, FollowsWhateverHappens) {
  std::minstd_rand random(1);
  const auto below = [&random](std::size_t end) { return random() % end; };
  const std::array statuses = {DownloadStatusQueued, DownloadStatusFailed, DownloadStatusCompleted};
  for (int look = 0; look < 300; ++look) {
    for (std::size_t step = below(4); step > 0; --step) {
      const std::size_t count = module_.all().size();
      const std::size_t kind = count == 0 ? 0 : below(4);
      if (kind == 0) module_.put("http://h/" + std::to_string(look), statuses.at(below(3)));
      if (kind == 1) module_.drop(below(count));
      if (kind == 2) module_.moveToEnd(below(count));
      if (kind == 3) module_.all()[below(count)]->setStatus(statuses.at(below(3)));
    }
    kindsOfChanges();
    expectTheSameAsANewSnapshot();
  }
}

TEST_P(QueueTrackerTest, ACompleteFilmIsFoundByTheEndOfItsAddress) {
  module_.put("http://h/films/a.avi", DownloadStatusCompleted);
  module_.put("http://h/b.avi", DownloadStatusCompleted);
  module_.put("http://h/x/a.avi");
  module_.put("http://h/c.avi#top", DownloadStatusCompleted);
  kindsOfChanges();
  std::vector<std::string> found;
  for (const ItemState& item : tracker_.withAddressEnd("/a.avi")) found.push_back(item.url);
  EXPECT_THAT(found, ElementsAre("http://h/films/a.avi", "http://h/x/a.avi", "http://h/c.avi#top"));
}

TEST_P(QueueTrackerTest, AFilmThatWasRemovedSinceTheLookIsNotFoundComplete) {
  const unsigned int id = module_.put("http://h/a.avi", DownloadStatusCompleted).getId();
  kindsOfChanges();
  module_.drop(0);
  EXPECT_EQ(tracker_.find(id).has_value(), GetParam() == QueueTracker::Keep::kAll);
}

INSTANTIATE_TEST_SUITE_P(Keep, QueueTrackerTest,
                         testing::Values(QueueTracker::Keep::kAll,
                                         QueueTracker::Keep::kUnlessComplete),
                         [](const auto& keep) {
                           const bool isAll = keep.param == QueueTracker::Keep::kAll;
                           return isAll ? "All" : "UnlessComplete";
                         });

}  // namespace
}  // namespace playerx::model
