#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "kvpm/File.h"
#include "playerx/app/session/SavedQueue.h"
#include "tests/support/TempDir.h"
#include "tests/unit/app/FakeModule.h"

namespace playerx::session {
namespace {

const char kOneItem[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue>"
    "<DownloadItem title=\"A\" status=\"4\" url=\"http://h/a.avi\"/></DownloadQueue>\n";

TEST(SavedQueueTest, AFileOfNoBytesIsSetAside) {
  const support::TempDir folder;
  folder.write("downloadmanager.xml.unreadable", "older");
  SavedQueue(folder.path()).noteAllTold();
  folder.write("downloadmanager.xml", "");
  const SavedQueue saved(folder.path());
  saved.setAsideEmptyFile();
  EXPECT_FALSE(std::filesystem::exists(folder / "downloadmanager.xml"));
  EXPECT_EQ(saved.filesSetAside(),
            std::vector<std::string>{folder / "downloadmanager.xml.unreadable.2"});
  folder.write("downloadmanager.xml", "x");
  saved.setAsideEmptyFile();
  EXPECT_TRUE(std::filesystem::exists(folder / "downloadmanager.xml"));
}

TEST(SavedQueueTest, AFolderThatCanBeWrittenIsNoObstacle) {
  const support::TempDir folder;
  EXPECT_EQ(SavedQueue(folder.path()).writeProblem(), "");
  folder.write("downloadmanager.xml", "x");
  EXPECT_EQ(SavedQueue(folder.path()).writeProblem(), "");
  EXPECT_EQ(support::readFile(folder / "downloadmanager.xml"), "x");
}

TEST(SavedQueueTest, AnObstacleIsNamedWithWhatCanBeDone) {
  const support::TempDir folder;
  std::filesystem::create_directories(folder / "downloadmanager.xml");
  EXPECT_EQ(SavedQueue(folder.path()).writeProblem(),
            "The queue file " + (folder / "downloadmanager.xml").string() +
                " cannot be written (Is a directory); free some space or make it writable, or "
                "choose another folder with --data.");
}

TEST(SavedQueueTest, AFileThatCannotBeReadIsNamedAndLeftAlone) {
  const support::TempDir folder;
  const std::filesystem::path file = folder / "downloadmanager.xml";
  std::filesystem::create_symlink(file, file);
  EXPECT_EQ(SavedQueue(folder.path()).readProblem(),
            "The queue file " + file.string() +
                " cannot be read (Too many levels of symbolic links); nothing was changed. Try "
                "again, make it readable, or choose another folder with --data.");
  EXPECT_TRUE(std::filesystem::is_symlink(file));
}

TEST(SavedQueueTest, AFileThatIsMissingOrReadableIsNoProblem) {
  const support::TempDir folder;
  EXPECT_EQ(SavedQueue(folder.path()).readProblem(), "");
  EXPECT_EQ(SavedQueue(folder / "none").readProblem(), "");
  folder.write("downloadmanager.xml", std::string(200'000, 'x'));
  EXPECT_EQ(SavedQueue(folder.path()).readProblem(), "");
}

TEST(SavedQueueTest, AManagerThatReadNothingOfAFullFileIsNoticed) {
  const support::TempDir folder;
  support::EventLog log;
  FakeModule manager(log);
  const SavedQueue saved(folder.path());
  EXPECT_EQ(saved.loadProblem(manager), "");
  for (const char* const none : {"", "<other/>", "<DownloadQueue/>", "<DownloadQueue"}) {
    folder.write("downloadmanager.xml", none);
    EXPECT_EQ(saved.loadProblem(manager), "") << none;
  }
  folder.write("downloadmanager.xml", kOneItem);
  EXPECT_EQ(saved.loadProblem(manager),
            "The queue file " + (folder / "downloadmanager.xml").string() +
                " could not be read a moment ago; nothing was changed. Try again.");
  manager.put("http://h/a.avi");
  EXPECT_EQ(saved.loadProblem(manager), "");
}

TEST(SavedQueueTest, AFileThatOpensAndCannotBeReadIsNoticed) {
  const support::TempDir folder;
  std::filesystem::create_symlink("/proc/self/mem", folder / "downloadmanager.xml");
  support::EventLog log;
  FakeModule manager(log);
  EXPECT_THAT(SavedQueue(folder.path()).loadProblem(manager),
              testing::HasSubstr("cannot be read (Input/output error)"));
}

/// A manager whose saves go to the queue file of a folder, as far as that can be written.
class SavingTest : public testing::Test {
 protected:
  void SetUp() override {
    manager_.put("http://h/a.avi");
    manager_.onEvent([this](const std::string&) {
      if (saves_) trySave();
    });
  }

  void trySave() {
    kvpm::File file;
    const std::wstring path = file_.wstring();
    if (file.open(path, kvpm::FileOpenWrite) != 0) return;
    file.write(kOneItem, sizeof kOneItem - 1);
    if (!isDropped_) file.close();
  }

  std::string unsaved() { return SavedQueue(folder_.path()).saveAgain(manager_, manager_); }

  const support::TempDir folder_;
  const std::filesystem::path file_ = folder_ / "downloadmanager.xml";
  support::EventLog log_;
  FakeModule manager_{log_};
  bool saves_ = true;
  bool isDropped_ = false;
};

TEST_F(SavingTest, AQueueThatIsSavedOnceMoreLacksNothing) {
  EXPECT_EQ(unsaved(), "");
  EXPECT_EQ(support::readFile(file_), kOneItem);
}

TEST_F(SavingTest, AnEmptyQueueIsSavedOnceMoreToo) {
  manager_.drop(0);
  EXPECT_EQ(unsaved(), "");
  EXPECT_TRUE(std::filesystem::exists(file_));
}

TEST_F(SavingTest, AFileThatCannotBeReplacedLacksTheLastChanges) {
  std::filesystem::create_directories(file_);
  EXPECT_EQ(unsaved(), "The queue file " + file_.string() +
                           " does not hold the last changes (Is a directory); free some space or "
                           "make it writable, then run the command again.");
  std::filesystem::remove(file_);
  EXPECT_EQ(unsaved(), "");
}

TEST_F(SavingTest, AFileWhoseWritingWasBrokenOffLacksTheLastChanges) {
  trySave();
  isDropped_ = true;
  EXPECT_THAT(unsaved(), testing::HasSubstr("does not hold the last changes"));
}

TEST_F(SavingTest, AMissingFileLacksTheLastChanges) {
  saves_ = false;
  EXPECT_THAT(unsaved(), testing::HasSubstr("No such file"));
}

TEST_F(SavingTest, LinksInACircleHoldNothing) {
  std::filesystem::create_symlink(file_, file_);
  EXPECT_THAT(unsaved(), testing::HasSubstr("Too many levels"));
}

TEST(SavedQueueTest, AFileSetAsideIsNamedUntilTheUserHasBeenTold) {
  const support::TempDir folder;
  const std::filesystem::path first = folder.write("downloadmanager.xml.unreadable", "x");
  EXPECT_EQ(SavedQueue(folder.path()).filesSetAside(), std::vector<std::string>{first});
  SavedQueue(folder.path()).noteAllTold();
  const SavedQueue saved(folder.path());
  EXPECT_TRUE(saved.filesSetAside().empty());
  const std::filesystem::path next = folder.write("downloadmanager.xml.unreadable.2", "x");
  EXPECT_EQ(saved.filesSetAside(), std::vector<std::string>{next});
}

TEST(SavedQueueTest, AFileSetAsideIsNotNamedAgainWhenTheFolderIsMoved) {
  const support::TempDir folder;
  folder.write("old/downloadmanager.xml.unreadable", "x");
  SavedQueue(folder / "old").noteAllTold();
  std::filesystem::rename(folder / "old", folder / "new");
  EXPECT_TRUE(SavedQueue(folder / "new").filesSetAside().empty());
}

TEST(SavedQueueTest, AFileSetAsideUnderAnOldNameIsNamedAnew) {
  const support::TempDir folder;
  const std::filesystem::path file = folder.write("downloadmanager.xml.unreadable", "x");
  SavedQueue(folder.path()).noteAllTold();
  std::filesystem::remove(file);
  SavedQueue(folder.path()).noteAllTold();
  folder.write("downloadmanager.xml.unreadable", "y");
  EXPECT_EQ(SavedQueue(folder.path()).filesSetAside(), std::vector<std::string>{file});
}

}  // namespace
}  // namespace playerx::session
