#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "tests/unit/item/FilledItem.h"

namespace {

TEST(DownloadItemCopy, HasTheIdOfItsSourceYetUsesOneUp) {
  const DownloadItem source;
  const DownloadItem copy(&source);
  const DownloadItem next;
  EXPECT_EQ(copy.getId(), source.getId());
  EXPECT_EQ(next.getId(), source.getId() + 2);
}

TEST(DownloadItemCopy, HasTheFieldsThatAWorkerAndAViewNeed) {
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

TEST(DownloadItemCopy, NeitherConfirmsNorEstimatesByItself) {
  DownloadItem source;
  fill(source);
  const DownloadItem copy(&source);
  EXPECT_EQ(copy.getTicketId(), 0);
  EXPECT_EQ(copy.getLastProgressUpdateTime(), 0U);
  EXPECT_EQ(copy.getDownloadInfo(), KPB::DownloadInfo());
}

TEST(DownloadItemCopy, TakesValuesOutOfRangeAsTheyAre) {
  DownloadItem source;
  source.setUID(UINT64_MAX);
  source.setSize(UINT64_MAX);
  source.setPercentDownloaded(INT_MIN);
  source.setSlotNumber(INT_MAX);
  source.setId(0);
  const DownloadItem copy(&source);
  EXPECT_EQ(copy.getUID(), UINT64_MAX);
  EXPECT_EQ(copy.getSize(), UINT64_MAX);
  EXPECT_EQ(copy.getPercentDownloaded(), INT_MIN);
  EXPECT_EQ(copy.getSlotNumber(), INT_MAX);
  EXPECT_EQ(copy.getId(), 0U);
}

TEST(DownloadItemCopy, KeepsEveryCharacterOfItsTexts) {
  DownloadItem source;
  setTexts(source, kWideText, kNarrowText);
  expectTexts(DownloadItem(&source), kWideText, kNarrowText);
}

TEST(DownloadItemCopy, OfACompletedItemIsCompletedForGood) {
  DownloadItem source;
  source.setStatus(DownloadStatusCompleted);
  DownloadItem copy(&source);
  for (int status = -1; status <= 8; ++status) {
    copy.setStatus(static_cast<DownloadStatusEnumType>(status));
    EXPECT_EQ(copy.getStatus(), DownloadStatusCompleted) << status;
  }
}

TEST(DownloadItemCopy, GoesItsOwnWay) {
  auto source = std::make_unique<DownloadItem>();
  fill(*source);
  DownloadItem copy(source.get());
  DownloadItem second(&copy);
  setTexts(*source, L"source", "source");
  source->setSize(1);
  copy.setStatus(DownloadStatusFailed);
  copy.setUID(78);
  EXPECT_EQ(copy.getTitle(), L"Title");
  EXPECT_EQ(copy.getTicket(), std::string("ti\0cket", 7));
  EXPECT_EQ(copy.getSize(), 1ULL << 40);
  EXPECT_EQ(source->getStatus(), DownloadStatusHeld);
  EXPECT_EQ(source->getUID(), 77U);
  source.reset();
  EXPECT_EQ(copy.getTitle(), L"Title") << "it outlives its source";
  EXPECT_EQ(second.getStatus(), DownloadStatusHeld);
  EXPECT_EQ(second.getUID(), 77U);
}

/// A source that is not built as the copy is: its longs are wider than they may be.
struct WideSource : DownloadItem {
  long getContentEncryptionUsageId() const override { return (1L << 32) + 5; }
  unsigned long getTimeRemaining() const override { return (1UL << 32) + 6; }
};

TEST(DownloadItemCopy, KeepsThirtyTwoBitsOfWhatItsSourceSays) {
  const WideSource source;
  const DownloadItem copy(&source);
  EXPECT_EQ(copy.getContentEncryptionUsageId(), 5);
  EXPECT_EQ(copy.getTimeRemaining(), 6U);
}

/// A source that records what it is asked for, and is to be played from the second question on.
class RecordingSource : public DownloadItem {
 public:
  // clang-format off
  unsigned long long getUID() const override { return asked("UID", DownloadItem::getUID()); }
  unsigned int getId() const override { return asked("id", DownloadItem::getId()); }
  const std::wstring& getPath() const override { asked("path"); return DownloadItem::getPath(); }
  const std::wstring& getUrl() const override { asked("URL"); return DownloadItem::getUrl(); }
  const std::wstring& getTitle() const override { asked("title"); return DownloadItem::getTitle(); }
  const std::string& getTicket() const override { asked("ticket"); return DownloadItem::getTicket(); }
  unsigned long long getSize() const override { return asked("size", DownloadItem::getSize()); }
  int getPercentDownloaded() const override { return asked("percent", 0); }
  DownloadStatusEnumType getStatus() const override { return asked("status", DownloadStatusQueued); }
  std::wstring getContentProviderDisplayName() const override { return asked("provider", std::wstring()); }
  long getContentEncryptionUsageId() const override { return asked("usage id", 0L); }
  long getTicketId() const override { return asked("ticket id", 0L); }
  bool getTicketAlreadyTorn() const override { return asked("torn", false); }
  bool getEncrypted() const override { return asked("encrypted", false); }
  int getSlotNumber() const override { return asked("slot", -1); }
  bool getReadyForProgressivePlayback() const override { return asked("ready", false); }
  bool getAutoProgressivePlayback() const override { return asked("auto", ++playQuestions_ > 1); }
  unsigned long getTimeRemaining() const override { return asked("time remaining", 0UL); }
  unsigned long getLastProgressUpdateTime() const override { return asked("last progress", 0UL); }
  KPB::DownloadInfo getDownloadInfo() const override { return asked("info", KPB::DownloadInfo()); }
  // clang-format on

  const std::vector<std::string>& questions() const { return questions_; }

 private:
  void asked(const char* field) const { questions_.emplace_back(field); }
  template <class T>
  T asked(const char* field, T answer) const {
    asked(field);
    return answer;
  }

  mutable std::vector<std::string> questions_;
  mutable int playQuestions_ = 0;
};

TEST(DownloadItemCopy, AsksItsSourceInThisOrder) {
  const RecordingSource source;
  const DownloadItem copy(&source);
  EXPECT_EQ(source.questions(),
            (std::vector<std::string>{"UID", "status", "size", "percent", "path", "URL", "ticket",
                                      "title", "provider", "torn", "usage id", "encrypted", "ready",
                                      "auto", "slot", "time remaining", "id", "auto"}));
}

TEST(DownloadItemCopy, TakesTheLastAnswerToWhetherItIsToBePlayed) {
  const RecordingSource source;
  EXPECT_TRUE(DownloadItem(&source).getAutoProgressivePlayback());
}

}  // namespace
