#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/unit/item/FilledItem.h"

namespace {

/// Of the first item of the program: built before any test runs.
const unsigned int kFirstId = DownloadItem().getId();

TEST(DownloadItem, TheFirstOneHasTheIdOne) { EXPECT_EQ(kFirstId, 1U); }

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
  for (const unsigned long long value : {0ULL, static_cast<unsigned long long>(UINT64_MAX)}) {
    item.setUID(value);
    EXPECT_EQ(item.getUID(), value);
    item.setSize(value);
    EXPECT_EQ(item.getSize(), value);
  }
  for (const int value : {-5, 1000, INT_MIN, INT_MAX}) {
    item.setPercentDownloaded(value);
    EXPECT_EQ(item.getPercentDownloaded(), value);
    item.setSlotNumber(value);
    EXPECT_EQ(item.getSlotNumber(), value);
    item.setStatus(static_cast<DownloadStatusEnumType>(value));
    EXPECT_EQ(item.getStatus(), static_cast<DownloadStatusEnumType>(value));
  }
  for (const long value : {0L, long{INT32_MIN}, long{INT32_MAX}}) {
    item.setTicketId(value);
    EXPECT_EQ(item.getTicketId(), value);
    item.setContentEncryptionUsageId(value);
    EXPECT_EQ(item.getContentEncryptionUsageId(), value);
  }
  for (const unsigned int value : {0U, UINT_MAX}) {
    item.setId(value);
    EXPECT_EQ(item.getId(), value);
  }
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

TEST(DownloadItem, KeepsEveryCharacterOfItsTexts) {
  DownloadItem item;
  setTexts(item, kWideText, kNarrowText);
  expectTexts(item, kWideText, kNarrowText);
}

TEST(DownloadItem, ItemsOfOneProviderKeepTheNameWhenOneOfThemGetsAnother) {
  DownloadItem one, two;
  one.setContentProviderDisplayName(L"films.example");
  two.setContentProviderDisplayName(L"films.example");
  one.setContentProviderDisplayName(L"other.example");
  EXPECT_EQ(one.getContentProviderDisplayName(), L"other.example");
  EXPECT_EQ(two.getContentProviderDisplayName(), L"films.example");
  one.setContentProviderDisplayName(L"");
  EXPECT_EQ(DownloadItem(&one).getContentProviderDisplayName(), L"");
  EXPECT_EQ(DownloadItem(&two).getContentProviderDisplayName(), L"films.example");
}

TEST(DownloadItem, TextIsReferredToWhereItIsStored) {
  DownloadItem item;
  EXPECT_EQ(&item.getPath(), &item.getPath());
  EXPECT_EQ(&item.getUrl(), &item.getUrl());
  EXPECT_EQ(&item.getTitle(), &item.getTitle());
  EXPECT_EQ(&item.getTicket(), &item.getTicket());
  const std::wstring& title = item.getTitle();
  item.setTitle(L"new");
  EXPECT_EQ(title, L"new");
}

TEST(DownloadItem, KeepsTheWholeDownloadInfoByValue) {
  const unsigned char rights[] = {1, 0, 255};
  KPB::DownloadInfo info = infoTitled("title");
  info.setDownloadId(9);
  info.setTempUsername("user");
  info.setTempPassword("password");
  info.setSTRDChunk(rights, sizeof(rights));
  info.setOutputFilename("a.vesk");
  info.setMoviesDirectory("/films");
  info.setDownloadDirectory("/partial");
  const KPB::DownloadInfo given = info;
  DownloadItem item;
  item.setDownloadInfo(info);
  info.setTitle("changed since");
  EXPECT_EQ(item.getDownloadInfo(), given);
  KPB::DownloadInfo taken = item.getDownloadInfo();
  taken.setTitle("changed since");
  EXPECT_EQ(item.getDownloadInfo(), given);
}

TEST(DownloadItem, TheStatesHaveTheirNumbers) {
  EXPECT_EQ(DownloadStatusPaused, 0);
  EXPECT_EQ(DownloadStatusQueued, 1);
  EXPECT_EQ(DownloadStatusStarting, 2);
  EXPECT_EQ(DownloadStatusDownloading, 3);
  EXPECT_EQ(DownloadStatusCompleted, 4);
  EXPECT_EQ(DownloadStatusStopped, 5);
  EXPECT_EQ(DownloadStatusFailed, 6);
  EXPECT_EQ(DownloadStatusHeld, 7);
}

TEST(DownloadItem, StaysCompletedWhateverIsSet) {
  DownloadItem item;
  item.setStatus(DownloadStatusCompleted);
  for (int status = -1; status <= 8; ++status) {
    item.setStatus(static_cast<DownloadStatusEnumType>(status));
    EXPECT_EQ(item.getStatus(), DownloadStatusCompleted) << status;
  }
}

TEST(DownloadItem, OnlyCompletedIsFinal) {
  for (const int status : {0, 1, 2, 3, 5, 6, 7}) {
    for (int next = 0; next <= 7; ++next) {
      DownloadItem item;
      item.setStatus(static_cast<DownloadStatusEnumType>(status));
      item.setStatus(static_cast<DownloadStatusEnumType>(next));
      EXPECT_EQ(item.getStatus(), next) << status;
    }
  }
}

TEST(DownloadItem, SettingAnIdDoesNotMoveTheCounter) {
  DownloadItem item;
  const unsigned int id = item.getId();
  item.setId(id + 1000);
  EXPECT_EQ(DownloadItem().getId(), id + 1);
}

TEST(DownloadItem, TwoBuiltOneAfterTheOtherHaveConsecutiveIds) {
  const DownloadItem first;
  const DownloadItem second;
  EXPECT_GE(first.getId(), 1U);
  EXPECT_EQ(second.getId(), first.getId() + 1);
}

TEST(DownloadItem, TakesAnyIdThatIsSet) {
  DownloadItem item;
  item.setId(4000000000U);
  EXPECT_EQ(item.getId(), 4000000000U);
  EXPECT_EQ(DownloadItem(&item).getId(), 4000000000U);
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

/// Whether `change` gives an item a version that it has not had before.
bool givesANewVersion(const std::function<void(DownloadItem&)>& change) {
  DownloadItem item;
  const std::uint64_t before = item.version();
  change(item);
  return item.version() > before;
}

TEST(DownloadItem, EverySetOfAFieldThatAFileKeepsOrAViewShowsGivesANewVersion) {
  EXPECT_TRUE(givesANewVersion([](auto& item) { item.setTitle(L"a"); }));
  EXPECT_TRUE(givesANewVersion([](auto& item) { item.setContentEncryptionUsageId(1); }));
  EXPECT_TRUE(givesANewVersion([](auto& item) { item.setStatus(DownloadStatusFailed); }));
  EXPECT_TRUE(givesANewVersion([](auto& item) { item.setSize(1); }));
  EXPECT_TRUE(givesANewVersion([](auto& item) { item.setPercentDownloaded(1); }));
  EXPECT_TRUE(givesANewVersion([](auto& item) { item.setPath(L"a"); }));
  EXPECT_TRUE(givesANewVersion([](auto& item) { item.setTicket("a"); }));
  EXPECT_TRUE(givesANewVersion([](auto& item) { item.setTimeRemaining(1); }));
  EXPECT_TRUE(givesANewVersion([](auto& item) { item.setContentProviderDisplayName(L"a"); }));
  EXPECT_TRUE(givesANewVersion([](auto& item) { item.setEncrypted(true); }));
  EXPECT_TRUE(givesANewVersion([](auto& item) { item.setTicketAlreadyTorn(true); }));
  EXPECT_TRUE(givesANewVersion([](auto& item) { item.setUrl(L"a"); }));
  EXPECT_TRUE(givesANewVersion([](auto& item) { item.setReadyForProgressivePlayback(true); }));
}

TEST(DownloadItem, TheRestLeavesTheVersion) {
  EXPECT_FALSE(givesANewVersion([](auto& item) { item.setUID(1); }));
  EXPECT_FALSE(givesANewVersion([](auto& item) { item.setLastProgressUpdateTime(1); }));
  EXPECT_FALSE(givesANewVersion([](auto& item) { item.setSlotNumber(1); }));
  EXPECT_FALSE(givesANewVersion([](auto& item) { item.setAutoProgressivePlayback(true); }));
}

TEST(DownloadItem, AnItemOfAnotherClassHasNoVersion) {
  struct Derived : DownloadItem {};
  EXPECT_EQ(DownloadItem::versionOf(Derived()), 0U);
  const DownloadItem item;
  EXPECT_EQ(DownloadItem::versionOf(item), item.version());
}

TEST(DownloadItem, NoTwoItemsShareAVersion) {
  const DownloadItem one;
  const DownloadItem two;
  const DownloadItem copy(&one);
  EXPECT_GT(one.version(), 0U);
  EXPECT_NE(one.version(), two.version());
  EXPECT_NE(one.version(), copy.version());
}

TEST(DownloadItem, ReportsThatItsIdOrItsAddressIsSet) {
  DownloadItem item;
  std::atomic<bool> isChanged{false};
  item.reportKeyChanges(&isChanged);
  item.setTitle(L"a");
  DownloadItem(&item).setUrl(L"a");
  EXPECT_FALSE(isChanged) << "a copy does not report";
  item.setUrl(L"a");
  EXPECT_TRUE(isChanged.exchange(false));
  item.setId(1);
  EXPECT_TRUE(isChanged);
}

TEST(DownloadItem, ItemsThatAreGoneTakeNoMemoryWhateverThreadMadeThem) {
  std::vector<std::unique_ptr<DownloadItem>> items(10'000);
  const auto taken = [] { return ::mallinfo2().uordblks + ::mallinfo2().hblkhd; };
  const auto makeAndDrop = [&items] {
    std::thread([&items] {
      for (auto& item : items) item = std::make_unique<DownloadItem>();
    }).join();
    for (auto& item : items) item.reset();
  };
  makeAndDrop();
  const std::size_t before = taken();
  for (int i = 0; i < 10; ++i) makeAndDrop();
  EXPECT_LT(taken(), before + 100'000);
}

/// Owns an item until the program has ended, which a host may do with a copy.
std::unique_ptr<DownloadItem> lastItem;

TEST(DownloadItem, MayOutliveTheProgramsEnd) { lastItem = std::make_unique<DownloadItem>(); }

}  // namespace
