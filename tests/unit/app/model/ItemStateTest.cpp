#include <gtest/gtest.h>

#include <set>

#include "tests/unit/app/FakeModule.h"

namespace playerx::model {
namespace {

TEST(ItemStateTest, ASnapshotHoldsEveryFieldInQueueOrder) {
  support::EventLog log;
  FakeModule module(log);
  DownloadItem& first = module.put("http://h/a.avi", DownloadStatusDownloading);
  first.setTitle(L"Z\u00FCrich");
  first.setContentProviderDisplayName(L"h");
  first.setPath(L"/m/a.avi");
  first.setPercentDownloaded(40);
  first.setSize(7);
  first.setReadyForProgressivePlayback(true);
  first.setTicket("t");
  module.put("http://h/b.avi", DownloadStatusHeld);

  const std::vector<ItemState> queue = snapshotOf(module);
  ASSERT_EQ(queue.size(), 2u);
  const ItemState expected{
      first.getId(), "Zürich", "h", "http://h/a.avi", "/m/a.avi", DownloadStatusDownloading, 40, 7,
      true,          "t"};
  EXPECT_EQ(queue[0], expected);
  EXPECT_EQ(queue[1].url, "http://h/b.avi");
}

TEST(ItemStateTest, APercentageStaysWithinItsBounds) {
  DownloadItem item;
  item.setPercentDownloaded(-1);
  EXPECT_EQ(stateOf(item).percent, 0);
  item.setPercentDownloaded(200);
  EXPECT_EQ(stateOf(item).percent, 100);
}

TEST(ItemStateTest, EachStatusHasAWordOfItsOwn) {
  std::set<std::string> words;
  for (int status = 0; status <= 7; ++status) {
    words.insert(statusWord(static_cast<DownloadStatusEnumType>(status)));
  }
  EXPECT_EQ(words.size(), 8u);
  EXPECT_FALSE(words.contains("unknown"));
  EXPECT_STREQ(statusWord(static_cast<DownloadStatusEnumType>(99)), "unknown");
}

TEST(ItemStateTest, CompletedStoppedOrFailedItemsNeedNoMoreWork) {
  for (const auto status : {DownloadStatusCompleted, DownloadStatusStopped, DownloadStatusFailed}) {
    EXPECT_FALSE(isUnfinished(status));
  }
  for (const auto status : {DownloadStatusPaused, DownloadStatusQueued, DownloadStatusStarting,
                            DownloadStatusDownloading, DownloadStatusHeld}) {
    EXPECT_TRUE(isUnfinished(status));
  }
}

}  // namespace
}  // namespace playerx::model
