#include <gtest/gtest.h>

#include <functional>

#include "item/DownloadItem.h"
#include "persistence/QueueDocument.h"
#include "persistence/WrittenQueue.h"
#include "persistence/XmlDocument.h"
#include "persistence/XmlText.h"

namespace persistence {
namespace {

using Items = std::vector<VeskPlayerX::DownloadItemInterface*>;

class WrittenQueueTest : public testing::Test {
 protected:
  DownloadItem one, two;
  Items both{&one, &two};
  WrittenQueue written;

  void SetUp() override {
    one.setTitle(L"<eins> & Zürich");
    one.setTicket("t\n\"1\"");
    two.setUrl(L"http://h/two.avi");
  }

  void expectAsWrittenAnew(const Items& items) {
    EXPECT_EQ(written.document(items), WrittenQueue{}.document(items));
  }
};

TEST_F(WrittenQueueTest, AnElementIsTheLibrarysOwnText) {
  const std::string text = written.document(both).value();
  const XmlReports reports;
  const XmlDocument document = parseXml(text, reports);
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(serialiseXml(*document, reports), text);
}

TEST_F(WrittenQueueTest, TheDocumentIsTheOneWrittenAnew) {
  expectAsWrittenAnew(both);
  expectAsWrittenAnew(both);
  expectAsWrittenAnew({&two, &one});
  expectAsWrittenAnew({&two});
  expectAsWrittenAnew({});
  expectAsWrittenAnew(both);
}

TEST_F(WrittenQueueTest, AChangeOfAnyFieldIsWritten) {
  const std::vector<std::function<void(DownloadItem&)>> changes = {
      [](auto& item) { item.setTitle(L"new"); },
      [](auto& item) { item.setContentEncryptionUsageId(-1); },
      [](auto& item) { item.setStatus(DownloadStatusFailed); },
      [](auto& item) { item.setSize(5); },
      [](auto& item) { item.setPercentDownloaded(50); },
      [](auto& item) { item.setPath(L"/m/a.avi"); },
      [](auto& item) { item.setTicket("other"); },
      [](auto& item) { item.setTimeRemaining(7); },
      [](auto& item) { item.setContentProviderDisplayName(L"P"); },
      [](auto& item) { item.setEncrypted(true); },
      [](auto& item) { item.setTicketAlreadyTorn(true); },
      [](auto& item) { item.setUrl(L"http://h/new.avi"); },
  };
  expectAsWrittenAnew(both);
  for (const auto& change : changes) {
    const auto before = written.document(both);
    change(one);
    EXPECT_NE(written.document(both), before);
    expectAsWrittenAnew(both);
  }
}

TEST_F(WrittenQueueTest, ItemsOfOneIdKeepTheirOwnFields) {
  DownloadItem copy(&one);
  copy.setTitle(L"a copy");
  expectAsWrittenAnew({&one, &copy});
  expectAsWrittenAnew({&copy, &one});
}

TEST_F(WrittenQueueTest, ATextThatIsTooLongIsCut) {
  one.setTicket(std::string(20'000'000, 'x'));
  const auto back = readQueueDocument(written.document(both).value());
  ASSERT_TRUE(back);
  EXPECT_EQ(back->at(0)->getTicket().size(), kLongestXmlValue);
  EXPECT_EQ(back->at(1)->getUrl(), two.getUrl());
  expectAsWrittenAnew(both);
}

}  // namespace
}  // namespace persistence
