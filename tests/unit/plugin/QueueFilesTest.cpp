#include <gtest/gtest.h>

#include <climits>

#include "persistence/DownloadManagerPersistence.h"
#include "plugin/QueueFiles.h"
#include "tests/support/TempDir.h"
#include "tests/unit/plugin/QueueText.h"

namespace {

namespace fs = std::filesystem;

constexpr char kLegacyHead[] =
    "<drmAuth:DownloadManagerDataContainer xmlns:drmAuth=\"com.vesk.container\" version=\"1\" >";

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
    folder_.write("DownloadQueue.dlq",
                  std::string(kLegacyHead) +
                      "<drmAuth:DownloadManagerVideoElement status=\"4\" fileSize=\"5\"/>"
                      "</drmAuth:DownloadManagerDataContainer>");
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
  EXPECT_TRUE(fs::exists(current()));
  EXPECT_FALSE(fs::exists(legacy()));
}

TEST_F(QueueFilesTest, TheCurrentFileIsReadAndLeftAsItIs) {
  givenCurrent("A1 B4");
  const std::string before = support::readFile(current());
  EXPECT_EQ(read(), "A1 B4");
  EXPECT_EQ(support::readFile(current()), before);
}

TEST_F(QueueFilesTest, AnEarlierReleasesQueueIsTakenOverOnce) {
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

TEST_F(QueueFilesTest, BesideALinkThatLeadsNowhereTheEarlierFileIsTakenOver) {
  fs::create_symlink(folder_ / "elsewhere.xml", current());
  givenLegacy();
  EXPECT_EQ(read(), "4");
  EXPECT_TRUE(fs::exists(current()));
  EXPECT_FALSE(fs::exists(legacy()));
}

TEST_F(QueueFilesTest, WithBothFilesTheEarlierOneIsLeftAlone) {
  givenCurrent("A1");
  givenLegacy();
  EXPECT_EQ(read(), "A1");
  EXPECT_TRUE(fs::exists(legacy()));
}

TEST_F(QueueFilesTest, AnUnreadableCurrentFileIsSetAside) {
  folder_.write("downloadmanager.xml", "half a que");
  EXPECT_EQ(read(), "");
  EXPECT_EQ(support::readFile(folder_ / "downloadmanager.xml.unreadable"), "half a que");
  EXPECT_TRUE(fs::exists(current()));
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

TEST_F(QueueFilesTest, AnUnreadableEarlierFileStaysWhereItCannotBeSetAside) {
  folder_.write("DownloadQueue.dlq", "half a que");
  folder_.write("DownloadQueue.dlq.unreadable", "");
  for (int number = 2; number <= 10'000; ++number) {
    folder_.write("DownloadQueue.dlq.unreadable." + std::to_string(number), "");
  }
  EXPECT_EQ(read(), "");
  EXPECT_EQ(support::readFile(legacy()), "half a que");
}

TEST_F(QueueFilesTest, AnEarlierFileOfThePresentFormatIsTakenOverToo) {
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
