#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "plugin/DownloadItem.h"

namespace {

/// Of the first item of the program: built before any test runs.
const unsigned int kFirstId = DownloadItem().getId();

TEST(DownloadItem, TheFirstOneHasTheIdOne) { EXPECT_EQ(kFirstId, 1U); }

KPB::DownloadInfo infoTitled(const std::string& title) {
  KPB::DownloadInfo info;
  info.setTitle(title);
  return info;
}

/// An item in which no field has its default.
void fill(DownloadItem& item) {
  item.setUID(77);
  item.setStatus(DownloadStatusHeld);
  item.setSize(1ULL << 40);
  item.setPercentDownloaded(42);
  item.setPath(L"/films/a.avi");
  item.setUrl(L"http://h/a.avi");
  item.setTitle(L"Title");
  item.setContentProviderDisplayName(L"Provider");
  item.setTicket(std::string("ti\0cket", 7));
  item.setTicketId(7);
  item.setEncrypted(true);
  item.setTicketAlreadyTorn(true);
  item.setReadyForProgressivePlayback(true);
  item.setAutoProgressivePlayback(true);
  item.setSlotNumber(3);
  item.setTimeRemaining(60);
  item.setLastProgressUpdateTime(100);
  item.setContentEncryptionUsageId(-9);
  item.setDownloadInfo(infoTitled("info"));
}

TEST(DownloadItem, ANewOneIsQueuedWithoutSlotAndKnowsNothingOfItsFilm) {
  const DownloadItem item;
  EXPECT_EQ(item.getStatus(), DownloadStatusQueued);
  EXPECT_EQ(item.getSlotNumber(), -1);
  EXPECT_EQ(item.getUID(), 0U);
  EXPECT_EQ(item.getSize(), 0U);
  EXPECT_EQ(item.getPercentDownloaded(), 0);
  EXPECT_EQ(item.getPath(), L"");
  EXPECT_EQ(item.getUrl(), L"");
  EXPECT_EQ(item.getTitle(), L"");
  EXPECT_EQ(item.getContentProviderDisplayName(), L"");
  EXPECT_EQ(item.getTicket(), "");
  EXPECT_EQ(item.getTicketId(), 0);
  EXPECT_FALSE(item.getEncrypted());
  EXPECT_FALSE(item.getTicketAlreadyTorn());
  EXPECT_FALSE(item.getReadyForProgressivePlayback());
  EXPECT_FALSE(item.getAutoProgressivePlayback());
  EXPECT_EQ(item.getTimeRemaining(), 0U);
  EXPECT_EQ(item.getLastProgressUpdateTime(), 0U);
  EXPECT_EQ(item.getContentEncryptionUsageId(), 0);
  EXPECT_EQ(item.getDownloadInfo(), KPB::DownloadInfo());
}

TEST(DownloadItem, GivesBackWhatWasSet) {
  DownloadItem item;
  fill(item);
  EXPECT_EQ(item.getUID(), 77U);
  EXPECT_EQ(item.getStatus(), DownloadStatusHeld);
  EXPECT_EQ(item.getSize(), 1ULL << 40);
  EXPECT_EQ(item.getPercentDownloaded(), 42);
  EXPECT_EQ(item.getPath(), L"/films/a.avi");
  EXPECT_EQ(item.getUrl(), L"http://h/a.avi");
  EXPECT_EQ(item.getTitle(), L"Title");
  EXPECT_EQ(item.getContentProviderDisplayName(), L"Provider");
  EXPECT_EQ(item.getTicket(), std::string("ti\0cket", 7));
  EXPECT_EQ(item.getTicketId(), 7);
  EXPECT_TRUE(item.getEncrypted());
  EXPECT_TRUE(item.getTicketAlreadyTorn());
  EXPECT_TRUE(item.getReadyForProgressivePlayback());
  EXPECT_TRUE(item.getAutoProgressivePlayback());
  EXPECT_EQ(item.getSlotNumber(), 3);
  EXPECT_EQ(item.getTimeRemaining(), 60U);
  EXPECT_EQ(item.getLastProgressUpdateTime(), 100U);
  EXPECT_EQ(item.getContentEncryptionUsageId(), -9);
  EXPECT_EQ(item.getDownloadInfo(), infoTitled("info"));
}

TEST(DownloadItem, StoresValuesOutOfRangeAsTheyAre) {
  DownloadItem item;
  item.setPercentDownloaded(-5);
  EXPECT_EQ(item.getPercentDownloaded(), -5);
  item.setPercentDownloaded(1000);
  EXPECT_EQ(item.getPercentDownloaded(), 1000);
  item.setStatus(static_cast<DownloadStatusEnumType>(99));
  EXPECT_EQ(item.getStatus(), static_cast<DownloadStatusEnumType>(99));
}

TEST(DownloadItem, KeepsThirtyTwoBitsOfALong) {
  DownloadItem item;
  item.setTicketId((1L << 32) + 5);
  EXPECT_EQ(item.getTicketId(), 5);
  item.setContentEncryptionUsageId(0xFFFFFFFFL);
  EXPECT_EQ(item.getContentEncryptionUsageId(), -1);
  item.setTimeRemaining((1UL << 32) + 6);
  EXPECT_EQ(item.getTimeRemaining(), 6U);
  item.setLastProgressUpdateTime(0xFFFFFFFFUL);
  EXPECT_EQ(item.getLastProgressUpdateTime(), 0xFFFFFFFFUL);
}

TEST(DownloadItem, StaysCompletedWhateverIsSet) {
  DownloadItem item;
  item.setStatus(DownloadStatusCompleted);
  item.setStatus(DownloadStatusFailed);
  EXPECT_EQ(item.getStatus(), DownloadStatusCompleted);
  item.setStatus(DownloadStatusQueued);
  EXPECT_EQ(item.getStatus(), DownloadStatusCompleted);
}

TEST(DownloadItem, TwoBuiltOneAfterTheOtherHaveConsecutiveIds) {
  const DownloadItem first;
  const DownloadItem second;
  EXPECT_GE(first.getId(), 1U);
  EXPECT_EQ(second.getId(), first.getId() + 1);
}

TEST(DownloadItem, ACopyHasTheIdOfItsSourceYetUsesOneUp) {
  const DownloadItem source;
  const DownloadItem copy(&source);
  const DownloadItem next;
  EXPECT_EQ(copy.getId(), source.getId());
  EXPECT_EQ(next.getId(), source.getId() + 2);
}

TEST(DownloadItem, TakesAnyIdThatIsSet) {
  DownloadItem item;
  item.setId(4000000000U);
  EXPECT_EQ(item.getId(), 4000000000U);
  EXPECT_EQ(DownloadItem(&item).getId(), 4000000000U);
}

TEST(DownloadItem, ACopyHasTheFieldsThatAWorkerAndAViewNeed) {
  DownloadItem source;
  fill(source);
  const DownloadItem copy(&source);
  EXPECT_EQ(copy.getUID(), 77U);
  EXPECT_EQ(copy.getStatus(), DownloadStatusHeld);
  EXPECT_EQ(copy.getSize(), 1ULL << 40);
  EXPECT_EQ(copy.getPercentDownloaded(), 42);
  EXPECT_EQ(copy.getPath(), L"/films/a.avi");
  EXPECT_EQ(copy.getUrl(), L"http://h/a.avi");
  EXPECT_EQ(copy.getTitle(), L"Title");
  EXPECT_EQ(copy.getContentProviderDisplayName(), L"Provider");
  EXPECT_EQ(copy.getTicket(), std::string("ti\0cket", 7));
  EXPECT_TRUE(copy.getEncrypted());
  EXPECT_TRUE(copy.getTicketAlreadyTorn());
  EXPECT_TRUE(copy.getReadyForProgressivePlayback());
  EXPECT_TRUE(copy.getAutoProgressivePlayback());
  EXPECT_EQ(copy.getSlotNumber(), 3);
  EXPECT_EQ(copy.getTimeRemaining(), 60U);
  EXPECT_EQ(copy.getContentEncryptionUsageId(), -9);
}

TEST(DownloadItem, ACopyNeitherConfirmsNorEstimatesByItself) {
  DownloadItem source;
  fill(source);
  const DownloadItem copy(&source);
  EXPECT_EQ(copy.getTicketId(), 0);
  EXPECT_EQ(copy.getLastProgressUpdateTime(), 0U);
  EXPECT_EQ(copy.getDownloadInfo(), KPB::DownloadInfo());
}

TEST(DownloadItem, ACopyOfACompletedItemIsCompleted) {
  DownloadItem source;
  source.setStatus(DownloadStatusCompleted);
  EXPECT_EQ(DownloadItem(&source).getStatus(), DownloadStatusCompleted);
}

TEST(DownloadItem, ACopyGoesItsOwnWay) {
  DownloadItem source;
  source.setTitle(L"before");
  DownloadItem copy(&source);
  source.setTitle(L"source");
  copy.setStatus(DownloadStatusFailed);
  EXPECT_EQ(copy.getTitle(), L"before");
  EXPECT_EQ(source.getStatus(), DownloadStatusQueued);
}

TEST(DownloadItem, IdsAreUniqueOnAllThreads) {
  constexpr int kThreads = 4;
  constexpr int kItems = 500;
  std::vector<std::vector<unsigned int>> ids(kThreads);
  std::vector<std::thread> threads;
  for (auto& mine : ids) {
    threads.emplace_back([&mine] {
      for (int i = 0; i < kItems; ++i) mine.push_back(DownloadItem().getId());
    });
  }
  for (auto& thread : threads) thread.join();
  std::vector<unsigned int> all;
  for (const auto& some : ids) all.insert(all.end(), some.begin(), some.end());
  std::sort(all.begin(), all.end());
  EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
}

}  // namespace
