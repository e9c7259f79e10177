// What writeDownloadQueue leaves in the file.
#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <csignal>
#include <filesystem>

#include "persistence/QueueFile.h"
#include "tests/unit/persistence/Limit.h"
#include "tests/unit/persistence/QueueFileFixture.h"

namespace persistence {
namespace {

using testing::HasSubstr;

class QueueFileWrite : public QueueFileFixture {};

TEST_F(QueueFileWrite, AnEmptyQueueTakesFiftySixBytes) {
  EXPECT_EQ(written({}), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue/>\n");
  EXPECT_EQ(content().size(), 56U);
}

TEST_F(QueueFileWrite, AnItemIsOneEmptyElementWithTwelveAttributesInOrder) {
  EXPECT_EQ(written({everyFieldSet()}),
            kDeclaration +
                "<DownloadQueue><DownloadItem title=\"Summer\" contentEncryptionUsageID=\"42\" "
                "status=\"3\" fileSize=\"123456789012\" percentDownloaded=\"37\" "
                "filePath=\"/films/Summer.avi\" ticket=\"ticket text\" timeRemaining=\"95\" "
                "contentProviderDisplayName=\"Vesk\" encrypted=\"true\" "
                "ticketAlreadyTorn=\"true\" url=\"http://h/Summer.avi\"/></DownloadQueue>\n");
}

TEST_F(QueueFileWrite, ANewItemHasAllAttributesToo) {
  EXPECT_EQ(written({{}}),
            kDeclaration +
                "<DownloadQueue><DownloadItem title=\"\" contentEncryptionUsageID=\"0\" "
                "status=\"1\" fileSize=\"0\" percentDownloaded=\"0\" filePath=\"\" ticket=\"\" "
                "timeRemaining=\"0\" contentProviderDisplayName=\"\" encrypted=\"false\" "
                "ticketAlreadyTorn=\"false\" url=\"\"/></DownloadQueue>\n");
}

TEST_F(QueueFileWrite, ItemsStandInQueueOrderWithoutAnythingBetweenThem) {
  const std::string text = written({titled(L"one"), titled(L"two"), titled(L"three")});
  EXPECT_THAT(text, HasSubstr("url=\"\"/><DownloadItem title=\"two\""));
  EXPECT_LT(text.find("one"), text.find("two"));
  EXPECT_LT(text.find("two"), text.find("three"));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2);
}

TEST_F(QueueFileWrite, ANegativeUsageIdIsExtendedToSixtyFourBits) {
  Fields item;
  item.contentEncryptionUsageId = -1;
  EXPECT_THAT(written({item}), HasSubstr("contentEncryptionUsageID=\"18446744073709551615\""));
  item.contentEncryptionUsageId = INT_MIN;
  EXPECT_THAT(written({item}), HasSubstr("contentEncryptionUsageID=\"18446744071562067968\""));
}

TEST_F(QueueFileWrite, ANegativePercentageIsExtendedToSixtyFourBits) {
  Fields item;
  item.percentDownloaded = -1;
  EXPECT_THAT(written({item}), HasSubstr("percentDownloaded=\"18446744073709551615\""));
}

TEST_F(QueueFileWrite, ATimeRemainingOfTwoToTheThirtyFirstOrMoreIsNegative) {
  Fields item;
  item.timeRemaining = 0x7FFFFFFF;
  EXPECT_THAT(written({item}), HasSubstr("timeRemaining=\"2147483647\""));
  item.timeRemaining = 0x80000000;
  EXPECT_THAT(written({item}), HasSubstr("timeRemaining=\"-2147483648\""));
  item.timeRemaining = 0xFFFFFFFF;
  EXPECT_THAT(written({item}), HasSubstr("timeRemaining=\"-1\""));
}

TEST_F(QueueFileWrite, TheLargestSizeIsPrintedUnsigned) {
  Fields item;
  item.fileSize = ULLONG_MAX;
  EXPECT_THAT(written({item}), HasSubstr("fileSize=\"18446744073709551615\""));
}

TEST_F(QueueFileWrite, EveryStatusIsWrittenAsItIs) {
  Fields item;
  item.status = 7;
  EXPECT_THAT(written({item}), HasSubstr("status=\"7\""));
  item.status = -3;
  EXPECT_THAT(written({item}), HasSubstr("status=\"-3\""));
}

TEST_F(QueueFileWrite, TheTwoFlagsAreWrittenEachUnderItsOwnName) {
  Fields item;
  item.encrypted = true;
  EXPECT_THAT(written({item}), HasSubstr("encrypted=\"true\" ticketAlreadyTorn=\"false\""));
  item.encrypted = false;
  item.ticketAlreadyTorn = true;
  EXPECT_THAT(written({item}), HasSubstr("encrypted=\"false\" ticketAlreadyTorn=\"true\""));
}

TEST_F(QueueFileWrite, WideTextIsUtf8) {
  EXPECT_THAT(written({titled(L"\u00E4\u20AC\U0001F600")}),
              HasSubstr("title=\"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\""));
}

TEST_F(QueueFileWrite, OnlyWhatAnAttributeCannotHoldIsEscaped) {
  EXPECT_THAT(written({titled(L"<>&\"'\t\n\r\u007F;%")}),
              HasSubstr("title=\"&lt;&gt;&amp;&quot;'&#9;&#10;&#13;\x7F;%\""));
}

TEST_F(QueueFileWrite, TheTicketIsWrittenWithoutConversion) {
  Fields item;
  item.ticket = "a=\xC3\xA4 \xF0\x9F\x98\x80";
  EXPECT_THAT(written({item}), HasSubstr("ticket=\"a=\xC3\xA4 \xF0\x9F\x98\x80\""));
}

TEST_F(QueueFileWrite, AShorterQueueLeavesNothingOfTheOneBefore) {
  written({everyFieldSet(), everyFieldSet()});
  EXPECT_EQ(written({}).size(), 56U);
}

bool isVisible(const std::filesystem::directory_entry& entry) {
  return !entry.path().filename().native().starts_with('.');
}

TEST_F(QueueFileWrite, NoOtherVisibleFileIsLeftInTheFolder) {
  written({everyFieldSet()});
  written({});
  const std::filesystem::directory_iterator entries(folder().path());
  EXPECT_EQ(std::count_if(begin(entries), end(entries), isVisible), 1);
}

TEST_F(QueueFileWrite, SuccessIsReportedEvenWhenTheFileCannotBeOpened) {
  const auto nowhere = (folder() / "missing" / "downloadmanager.xml").wstring();
  EXPECT_TRUE(DownloadManagerPersistence::writeDownloadQueue(nowhere, {}));
  EXPECT_FALSE(exists("missing"));
  put("a file where a folder should be");
  EXPECT_TRUE(DownloadManagerPersistence::writeDownloadQueue(path() + L"/below", {}));
  EXPECT_EQ(content(), "a file where a folder should be");
}

TEST_F(QueueFileWrite, AFolderInThePlaceOfTheFileStays) {
  std::filesystem::create_directory(file());
  EXPECT_TRUE(DownloadManagerPersistence::writeDownloadQueue(path(), {}));
  EXPECT_TRUE(std::filesystem::is_directory(file()));
}

TEST_F(QueueFileWrite, AReplacementThatFailsLeavesTheOldQueue) {
  const std::string old = written({titled(L"one")});
  const Queue longer({everyFieldSet(), everyFieldSet()});
  auto* const former = std::signal(SIGXFSZ, SIG_IGN);
  {
    const Limit files(RLIMIT_NOFILE, 0);
    EXPECT_TRUE(DownloadManagerPersistence::writeDownloadQueue(path(), longer.items()));
  }
  EXPECT_EQ(content(), old) << "no file could be opened";
  {
    const Limit size(RLIMIT_FSIZE, 100);
    EXPECT_TRUE(DownloadManagerPersistence::writeDownloadQueue(path(), longer.items()));
  }
  EXPECT_EQ(content(), old) << "the disk was full";
  std::signal(SIGXFSZ, former);
  DownloadManagerPersistence::writeDownloadQueue(path(), longer.items());
  EXPECT_THAT(read(), testing::SizeIs(2));
}

TEST_F(QueueFileWrite, AFileThatHoldsTheQueueAlreadyIsNotReplaced) {
  const auto fileNow = [this] {
    struct stat status {};
    EXPECT_EQ(stat(std::filesystem::path(path()).c_str(), &status), 0);
    return status.st_ino;
  };
  written({titled(L"one")});
  const auto before = fileNow();
  written({titled(L"one")});
  EXPECT_EQ(fileNow(), before);
}

TEST_F(QueueFileWrite, AFileIsComparedToItsLastByteHoweverLongItIs) {
  for (const std::size_t size : {1U, 1U << 18, (1U << 18) + 1, 1U << 20}) {
    std::string text(size, 'x');
    put(text);
    EXPECT_TRUE(holdsExactly(path(), text)) << size;
    text.back() = 'y';
    EXPECT_FALSE(holdsExactly(path(), text)) << size;
  }
}

TEST_F(QueueFileWrite, AFileThatAnotherProgramChangedIsReplaced) {
  const std::string text = written({titled(L"one")});
  for (const std::string& other : {text + " ", std::string(text.size(), 'x'), std::string()}) {
    put(other);
    EXPECT_EQ(written({titled(L"one")}), text);
  }
}

}  // namespace
}  // namespace persistence
