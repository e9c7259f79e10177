// What readDownloadQueue makes of a file of the present format.
#include <fcntl.h>
#include <libxml/xmlerror.h>
#include <sys/stat.h>

#include <climits>
#include <future>
#include <random>

#include "tests/support/UniqueFd.h"
#include "tests/support/WaitFor.h"
#include "tests/unit/persistence/QueueFileFixture.h"

namespace persistence {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class QueueFileRead : public QueueFileFixture {
 protected:
  /// The one item of a document whose element carries these attributes.
  Fields itemWith(const std::string& attributes) const {
    const auto items = readOf(queueHolding("<DownloadItem " + attributes + "/>" + kFiller));
    EXPECT_THAT(items, SizeIs(1));
    return items.empty() ? Fields() : items.front();
  }

 private:
  /// Makes the file long enough to be recognised.
  const std::string kFiller = std::string(100, ' ');
};

TEST_F(QueueFileRead, EveryFieldComesBack) {
  EXPECT_THAT(writtenAndReadBack({everyFieldSet()}), ElementsAre(everyFieldSet()));
}

TEST_F(QueueFileRead, ItemsComeBackInOrder) {
  EXPECT_THAT(writtenAndReadBack({titled(L"one"), titled(L"two"), titled(L"three")}),
              ElementsAre(titled(L"one"), titled(L"two"), titled(L"three")));
}

TEST_F(QueueFileRead, ItemsAreNewWithIdsOfTheirOwn) {
  written({titled(L"one"), titled(L"two")});
  const auto items = DownloadManagerPersistence::readDownloadQueue(path());
  ASSERT_THAT(items, SizeIs(2));
  EXPECT_EQ(items[1]->getId(), items[0]->getId() + 1);
  takeFields(items);
}

TEST_F(QueueFileRead, TheTwoFlagsComeBackIndependently) {
  Fields encrypted;
  encrypted.encrypted = true;
  Fields torn;
  torn.ticketAlreadyTorn = true;
  EXPECT_THAT(writtenAndReadBack({encrypted, torn}), ElementsAre(encrypted, torn));
}

TEST_F(QueueFileRead, UnusualNumbersComeBack) {
  Fields item;
  item.contentEncryptionUsageId = -1;
  item.percentDownloaded = -1;
  item.timeRemaining = 0x80000001;
  item.fileSize = ULLONG_MAX;
  Fields other;
  other.contentEncryptionUsageId = INT_MIN;
  other.percentDownloaded = INT_MIN;
  other.timeRemaining = UINT_MAX;
  EXPECT_THAT(writtenAndReadBack({item, other}), ElementsAre(item, other));
}

TEST_F(QueueFileRead, AHeldItemComesBackAsDownloading) {
  Fields item;
  item.status = 7;
  Fields expected;
  expected.status = 3;
  EXPECT_THAT(writtenAndReadBack({item}), ElementsAre(expected));
}

TEST_F(QueueFileRead, EveryOtherStatusComesBackUnchecked) {
  for (const std::int32_t status : {0, 1, 2, 3, 4, 5, 6, 8, 99, -1, -7, INT_MAX, INT_MIN}) {
    Fields item;
    item.status = status;
    EXPECT_THAT(writtenAndReadBack({item}), ElementsAre(item));
  }
}

TEST_F(QueueFileRead, AMissingFileIsAnEmptyQueue) { EXPECT_THAT(read(), IsEmpty()); }

TEST_F(QueueFileRead, AnEmptyFileIsAnEmptyQueue) { EXPECT_THAT(readOf(""), IsEmpty()); }

TEST_F(QueueFileRead, AFolderIsAnEmptyQueue) {
  std::filesystem::create_directory(file());
  EXPECT_THAT(read(), IsEmpty());
}

TEST_F(QueueFileRead, APipeIsAnEmptyQueue) {
  ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
  auto reading = std::async(std::launch::async, [this] { return read(); });
  EXPECT_EQ(reading.wait_for(support::kGenerousDeadline), std::future_status::ready);
  const support::UniqueFd otherEnd(open(file().c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
  EXPECT_THAT(reading.get(), IsEmpty());
}

TEST_F(QueueFileRead, AValidFileOfLessThanEightySixBytesIsAnEmptyQueue) {
  const std::string text = queueHolding("<DownloadItem/>");
  ASSERT_EQ(text.size(), 86U);
  EXPECT_THAT(readOf(text), SizeIs(1));
  EXPECT_THAT(readOf(text.substr(0, 85)), IsEmpty());
}

TEST_F(QueueFileRead, AFileThatBeginsOtherwiseIsNotRecognised) {
  const std::string text = written({everyFieldSet()});
  ASSERT_THAT(readOf(text), SizeIs(1));
  EXPECT_THAT(readOf("\xEF\xBB\xBF" + text), IsEmpty());
  EXPECT_THAT(readOf(" " + text), IsEmpty());
  EXPECT_THAT(readOf("\n" + text), IsEmpty());
  const std::string body = text.substr(text.find("<DownloadQueue"));
  EXPECT_THAT(readOf("<?xml version='1.0' encoding='UTF-8'?>\n" + body), IsEmpty());
  EXPECT_THAT(readOf("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n" + body), IsEmpty());
  EXPECT_THAT(readOf("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n" + body), IsEmpty());
  EXPECT_THAT(readOf("<?xml version=\"1.1\" encoding=\"UTF-8\"?>\n" + body), IsEmpty());
  EXPECT_THAT(readOf("<?xml version=\"1.0\"?>\n" + body), IsEmpty());
  EXPECT_THAT(readOf(body), IsEmpty());
}

TEST_F(QueueFileRead, WhatFollowsTheEncodingInTheDeclarationDoesNotMatter) {
  const std::string text = written({everyFieldSet()});
  const std::string body = text.substr(text.find("<DownloadQueue"));
  EXPECT_THAT(readOf("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone='yes' ?>" + body),
              ElementsAre(everyFieldSet()));
}

TEST_F(QueueFileRead, AMalformedFileIsAnEmptyQueue) {
  const std::string filler(100, ' ');
  EXPECT_THAT(readOf(kDeclaration + "<DownloadQueue><DownloadItem></DownloadQueue>" + filler),
              IsEmpty());
  EXPECT_THAT(readOf(queueHolding("<DownloadItem title=\"a\" title=\"b\"/>" + filler)), IsEmpty());
  EXPECT_THAT(readOf(queueHolding("<DownloadItem title=\"\x01\"/>" + filler)), IsEmpty());
  EXPECT_THAT(readOf(queueHolding("<DownloadItem title=\"\xFF\"/>" + filler)), IsEmpty());
  EXPECT_THAT(readOf(queueHolding("<DownloadItem title=\"&unknown;\"/>" + filler)), IsEmpty());
  EXPECT_THAT(readOf(queueHolding(filler) + "<Another/>"), IsEmpty());
  EXPECT_THAT(readOf(kDeclaration + std::string(200, '\0')), IsEmpty());
  EXPECT_THAT(readOf(kDeclaration + filler), IsEmpty());
}

TEST_F(QueueFileRead, ARootOfAnotherNameIsAnEmptyQueue) {
  const std::string item = "<DownloadItem title=\"a\"/>" + std::string(100, ' ');
  for (const char* root : {"downloadQueue", "DownloadQueu", "DownloadQueue2", "Queue"}) {
    const std::string name(root);
    EXPECT_THAT(readOf(kDeclaration + "<" + name + ">" + item + "</" + name + ">"), IsEmpty());
  }
}

TEST_F(QueueFileRead, OnlyItemsDirectlyBelowTheRootCount) {
  EXPECT_THAT(readOf(queueHolding("<Folder><DownloadItem title=\"nested\"/></Folder>"
                                  "<DownloadItem title=\"one\"><DownloadItem title=\"inner\"/>"
                                  "</DownloadItem>")),
              ElementsAre(titled(L"one")));
}

TEST_F(QueueFileRead, OtherNodesAreSkipped) {
  EXPECT_THAT(readOf(queueHolding("text <!-- DownloadItem --><?DownloadItem title=\"p\"?>"
                                  "<downloadItem title=\"x\"/><DownloadItems title=\"y\"/>"
                                  "<![CDATA[<DownloadItem/>]]>\n<DownloadItem title=\"one\"/>")),
              ElementsAre(titled(L"one")));
}

TEST_F(QueueFileRead, NamespacesDoNotMatter) {
  EXPECT_THAT(
      readOf(kDeclaration + "<q:DownloadQueue xmlns:q=\"urn:q\"><q:DownloadItem q:title=\"one\"/>"
                            "</q:DownloadQueue>"),
      ElementsAre(titled(L"one")));
}

TEST_F(QueueFileRead, AbsentAttributesLeaveTheDefaults) {
  EXPECT_EQ(itemWith(""), Fields());
  EXPECT_EQ(itemWith("title=\"one\""), titled(L"one"));
}

TEST_F(QueueFileRead, AttributesMayStandInAnyOrderAmongOthers) {
  Fields expected = titled(L"one");
  expected.fileSize = 5;
  EXPECT_EQ(itemWith("fileSize=\"5\" Title=\"no\" colour=\"red\" title=\"one\""), expected);
}

TEST_F(QueueFileRead, MalformedNumbersAreReadAsThePlatformConvertsThem) {
  const Fields item = itemWith(
      "contentEncryptionUsageID=\"x\" status=\"\" fileSize=\"12 films\" "
      "percentDownloaded=\"4294967297\" timeRemaining=\"18446744073709551615\" "
      "encrypted=\"maybe\" ticketAlreadyTorn=\"1\"");
  Fields expected;
  expected.status = 0;
  expected.fileSize = 12;
  expected.percentDownloaded = 1;
  expected.timeRemaining = UINT_MAX;
  expected.ticketAlreadyTorn = true;
  EXPECT_EQ(item, expected);
}

TEST_F(QueueFileRead, ANegativeUsageIdIsReadInEitherForm) {
  Fields expected;
  expected.contentEncryptionUsageId = -1;
  EXPECT_EQ(itemWith("contentEncryptionUsageID=\"-1\""), expected);
  EXPECT_EQ(itemWith("contentEncryptionUsageID=\"18446744073709551615\""), expected);
}

TEST_F(QueueFileRead, AFileCutAnywhereIsAnEmptyQueue) {
  const std::string text = written({everyFieldSet(), titled(L"\u00E4\U0001F600\n"), titled(L"z")});
  const std::size_t whole = text.size() - 1;  // the line end behind the root adds nothing
  for (std::size_t size = 0; size < whole; ++size) {
    ASSERT_THAT(readOf(text.substr(0, size)), IsEmpty()) << "cut at " << size;
  }
  EXPECT_THAT(readOf(text.substr(0, whole)), SizeIs(3));
}

TEST_F(QueueFileRead, AFileWithAnyByteChangedNeverDoesHarm) {
  const std::string text = written({everyFieldSet(), titled(L"two")});
  std::mt19937 random(3);
  for (std::size_t at = 0; at < text.size(); ++at) {
    std::string changed = text;
    changed[at] = static_cast<char>(random());
    ASSERT_LE(readOf(changed).size(), 2U) << "at " << at;
  }
}

TEST_F(QueueFileRead, NothingIsPrinted) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  readOf(queueHolding("<DownloadItem title=\"\xFF\x01&unknown;\"" + std::string(100, ' ')));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

void countReport(void* count, xmlErrorPtr /*report*/) { ++*static_cast<int*>(count); }

TEST_F(QueueFileRead, ThePlayersOwnHandlerOfXmlErrorsIsLeftInPlace) {
  int reports = 0;
  xmlSetStructuredErrorFunc(&reports, countReport);
  readOf(queueHolding("<DownloadItem title=\"\xFF\"" + std::string(100, ' ')));
  written({titled(L"one")});
  EXPECT_EQ(reports, 0);
  EXPECT_EQ(xmlStructuredErrorContext, &reports);
  EXPECT_EQ(xmlStructuredError, countReport);
  xmlSetStructuredErrorFunc(nullptr, nullptr);
}

TEST_F(QueueFileRead, TheReaderOfThisFormatChecksNeitherLengthNorDeclaration) {
  const kvpm::CritLock lock(DownloadManagerPersistence::persistenceLock);
  EXPECT_THAT(takeFields(DownloadManagerPersistence::readNewQueue(path())), IsEmpty());
  put("");
  EXPECT_THAT(takeFields(DownloadManagerPersistence::readNewQueue(path())), IsEmpty());
  put("<DownloadQueue><DownloadItem title=\"one\" status=\"7\"/></DownloadQueue>");
  Fields expected = titled(L"one");
  expected.status = 3;
  EXPECT_THAT(takeFields(DownloadManagerPersistence::readNewQueue(path())), ElementsAre(expected));
  put("<Queue><DownloadItem title=\"one\"/></Queue>");
  EXPECT_THAT(takeFields(DownloadManagerPersistence::readNewQueue(path())), IsEmpty());
}

}  // namespace
}  // namespace persistence
