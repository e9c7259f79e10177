#include <gtest/gtest.h>

#include <climits>

#include "persistence/DownloadManagerPersistence.h"
#include "plugin/QueueFiles.h"
#include "tests/support/LegacyQueueFile.h"
#include "tests/support/TempDir.h"
#include "tests/unit/plugin/QueueText.h"

namespace plugin {
namespace {

namespace fs = std::filesystem;

using support::LegacyQueueFile;

/// A folder with the files that a player may find at its start.
class QueueFilesTest : public ::testing::Test {
 protected:
  void givenCurrent(const std::string& queue) {
    const auto items = queue_text::makeItems(queue);
    DownloadManagerPersistence::writeDownloadQueue(current().wstring(), items);
    for (auto* const item : items) delete item;
  }

  /// One completed item without a title.
  void givenLegacy() {
    givenLegacy(LegacyQueueFile().item().attribute("status", "4").attribute("fileSize", "5"));
  }

  void givenLegacy(const LegacyQueueFile& queue) {
    folder_.write("DownloadQueue.dlq", queue.document());
  }

  std::string read() {
    const auto items = QueueFiles(folder_.path().wstring()).readQueue();
    const std::string text = queue_text::textOf(items);
    for (auto* const item : items) delete item;
    return text;
  }

  fs::path current() const { return folder_ / "downloadmanager.xml"; }
  fs::path legacy() const { return folder_ / "DownloadQueue.dlq"; }

  support::TempDir folder_;
};

TEST_F(QueueFilesTest, TheFirstStartWritesAnEmptyQueue) {
  EXPECT_EQ(read(), "");
  EXPECT_EQ(support::readFile(current()),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue/>\n");
  EXPECT_EQ(fs::file_size(current()), 56U);
  EXPECT_FALSE(fs::exists(legacy()));
}

TEST_F(QueueFilesTest, TheCurrentFileIsReadAndLeftAsItIs) {
  givenCurrent("A1 B4");
  const std::string before = support::readFile(current());
  EXPECT_EQ(read(), "A1 B4");
  EXPECT_EQ(support::readFile(current()), before);
}

TEST_F(QueueFilesTest, AnEarlierReleasesQueueIsMigratedOnce) {
  givenLegacy();
  EXPECT_EQ(read(), "4");
  EXPECT_TRUE(fs::exists(current()));
  EXPECT_FALSE(fs::exists(legacy()));
  EXPECT_EQ(read(), "4") << "from the current file";
}

TEST_F(QueueFilesTest, ALinkThatLeadsNowhereIsNoCurrentFile) {
  fs::create_symlink(folder_ / "elsewhere.xml", current());
  EXPECT_EQ(read(), "");
  EXPECT_TRUE(fs::exists(current())) << "an empty queue was written";
}

TEST_F(QueueFilesTest, BesideALinkThatLeadsNowhereTheEarlierFileIsMigrated) {
  fs::create_symlink(folder_ / "elsewhere.xml", current());
  givenLegacy();
  EXPECT_EQ(read(), "4");
  EXPECT_TRUE(fs::exists(current()));
  EXPECT_FALSE(fs::exists(legacy()));
}

TEST_F(QueueFilesTest, EveryFieldAndTheOrderAreMigrated) {
  givenLegacy(LegacyQueueFile()
                  .item()
                  .attribute("contentEncryptionUsageID", "-1")
                  .attribute("status", "6")
                  .attribute("fileSize", "123456789012")
                  .text("title", L"Z\u00FCrich")
                  .attribute("ticket", "a <ticket> \xC3\xA4")
                  .text("filePath", L"/films/Z.vesk")
                  .attribute("timeRemaining", "4294967295")
                  .text("contentProviderDisplayName", L"P & Q")
                  .attribute("encrypted", "true")
                  .attribute("ticketAlreadyTorn", "false")
                  .text("url", L"http://h/z")
                  .attribute("percentDownloaded", "37")
                  .item()
                  .attribute("contentEncryptionUsageID", "2")
                  .attribute("status", "1")
                  .attribute("fileSize", "5")
                  .text("title", L"A")
                  .attribute("ticket", "t")
                  .text("filePath", L"/films/A.avi")
                  .attribute("timeRemaining", "95")
                  .text("contentProviderDisplayName", L"R")
                  .attribute("encrypted", "false")
                  .attribute("ticketAlreadyTorn", "true")
                  .text("url", L"http://h/a")
                  .attribute("percentDownloaded", "-2"));
  const std::string expected =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue>"
      "<DownloadItem title=\"Z\xC3\xBCrich\" contentEncryptionUsageID=\"18446744073709551615\" "
      "status=\"6\" fileSize=\"123456789012\" percentDownloaded=\"37\" filePath=\"/films/Z.vesk\" "
      "ticket=\"a &lt;ticket&gt; \xC3\xA4\" timeRemaining=\"-1\" "
      "contentProviderDisplayName=\"P &amp; Q\" encrypted=\"true\" ticketAlreadyTorn=\"false\" "
      "url=\"http://h/z\"/>"
      "<DownloadItem title=\"A\" contentEncryptionUsageID=\"2\" status=\"1\" fileSize=\"5\" "
      "percentDownloaded=\"18446744073709551614\" filePath=\"/films/A.avi\" ticket=\"t\" "
      "timeRemaining=\"95\" contentProviderDisplayName=\"R\" encrypted=\"false\" "
      "ticketAlreadyTorn=\"true\" url=\"http://h/a\"/></DownloadQueue>\n";
  read();
  EXPECT_EQ(support::readFile(current()), expected);

  const auto next = QueueFiles(folder_.path().wstring()).readQueue();
  const fs::path copy = folder_ / "copy.xml";
  DownloadManagerPersistence::writeDownloadQueue(copy.wstring(), next);
  for (auto* const item : next) delete item;
  EXPECT_EQ(support::readFile(copy), expected) << "what the next start has read";
}

TEST_F(QueueFilesTest, AHeldItemOfTheEarlierReleaseStaysHeldUntilTheNextStart) {
  givenLegacy(LegacyQueueFile().item().attribute("status", "7"));
  EXPECT_EQ(read(), "7");
  EXPECT_NE(support::readFile(current()).find(" status=\"7\" "), std::string::npos);
  EXPECT_EQ(read(), "3");
}

TEST_F(QueueFilesTest, AnEarlierFileWithoutBytesIsDeleted) {
  folder_.write("DownloadQueue.dlq", "");
  EXPECT_EQ(read(), "");
  EXPECT_TRUE(fs::exists(current()));
  EXPECT_FALSE(fs::exists(legacy()));
  EXPECT_FALSE(fs::exists(folder_ / "DownloadQueue.dlq.unreadable"));
}

TEST_F(QueueFilesTest, AnEarlierQueueWithoutItemsIsDeleted) {
  givenLegacy(LegacyQueueFile());
  EXPECT_EQ(read(), "");
  EXPECT_TRUE(fs::exists(current()));
  EXPECT_FALSE(fs::exists(legacy()));
  EXPECT_FALSE(fs::exists(folder_ / "DownloadQueue.dlq.unreadable"));
}

TEST_F(QueueFilesTest, WithBothFilesTheEarlierOneIsLeftAlone) {
  givenCurrent("A1");
  givenLegacy();
  EXPECT_EQ(read(), "A1");
  EXPECT_TRUE(fs::exists(legacy()));
}

TEST_F(QueueFilesTest, AnUnreadableCurrentFileIsLeftForTheNextSave) {
  folder_.write("downloadmanager.xml", "half a que");
  EXPECT_EQ(read(), "");
  EXPECT_EQ(support::readFile(current()), "half a que");
  EXPECT_FALSE(fs::exists(folder_ / "downloadmanager.xml.unreadable"));
}

TEST_F(QueueFilesTest, AnUnreadableCurrentFileDoesNotBringTheEarlierOneBack) {
  folder_.write("downloadmanager.xml", "half a que");
  givenLegacy();
  EXPECT_EQ(read(), "");
  EXPECT_EQ(read(), "") << "nor at the next start";
  EXPECT_TRUE(fs::exists(legacy()));
}

TEST_F(QueueFilesTest, AnUnreadableEarlierFileIsSetAsideBeforeItIsDeleted) {
  folder_.write("DownloadQueue.dlq", "half a que");
  EXPECT_EQ(read(), "");
  EXPECT_FALSE(fs::exists(legacy()));
  EXPECT_EQ(support::readFile(folder_ / "DownloadQueue.dlq.unreadable"), "half a que");
}

TEST_F(QueueFilesTest, AnEarlierFileOfAnUnreadableBodyIsSetAside) {
  const std::string whole = LegacyQueueFile().item().attribute("status", "1").document();
  const std::string cut = whole.substr(0, whole.size() - 10);
  folder_.write("DownloadQueue.dlq", cut);
  EXPECT_EQ(read(), "");
  EXPECT_FALSE(fs::exists(legacy()));
  EXPECT_EQ(support::readFile(folder_ / "DownloadQueue.dlq.unreadable"), cut);
  EXPECT_EQ(fs::file_size(current()), 56U);
}

TEST_F(QueueFilesTest, AnUnreadableEarlierFileStaysWhereItCannotBeSetAside) {
  folder_.write("DownloadQueue.dlq", "half a que");
  folder_.write("DownloadQueue.dlq.unreadable", "");
  for (int number = 2; number <= 10'000; ++number) {
    folder_.write("DownloadQueue.dlq.unreadable." + std::to_string(number), "");
  }
  EXPECT_EQ(read(), "");
  EXPECT_EQ(support::readFile(legacy()), "half a que");
}

TEST_F(QueueFilesTest, AnEarlierFileOfThePresentFormatIsMigratedToo) {
  givenCurrent("A1 B4");
  fs::rename(current(), legacy());
  EXPECT_EQ(read(), "A1 B4");
  EXPECT_TRUE(fs::exists(current()));
  EXPECT_FALSE(fs::exists(legacy()));
}

TEST_F(QueueFilesTest, TheEarlierFileStaysWhenTheCurrentOneCannotBeWritten) {
  // So deep that the earlier file's path is just short enough for the system, the current one's
  // not.
  constexpr std::size_t kDepth = PATH_MAX - 1 - std::string_view("/DownloadQueue.dlq").size();
  fs::path folder = folder_.path();
  while (folder.native().size() + 1 < kDepth) {
    const std::size_t room = kDepth - folder.native().size() - 1;
    folder /= std::string(room > 200 ? 100 : room, 'x');
    fs::create_directory(folder);
  }
  givenLegacy();
  fs::rename(legacy(), folder / "DownloadQueue.dlq");

  const auto items = QueueFiles(folder.wstring()).readQueue();
  EXPECT_EQ(queue_text::textOf(items), "4");
  for (auto* const item : items) delete item;
  EXPECT_TRUE(fs::exists(folder / "DownloadQueue.dlq"));
}

TEST_F(QueueFilesTest, AFolderThatIsNotThereIsAnEmptyQueue) {
  const QueueFiles files((folder_ / "missing").wstring());
  EXPECT_TRUE(files.readQueue().empty());
  EXPECT_EQ(files.current(), (folder_ / "missing").wstring() + L"/downloadmanager.xml");
}

}  // namespace
}  // namespace plugin
