#include <gtest/gtest.h>

#include <filesystem>

#include "playerx/app/session/SavedQueue.h"
#include "tests/support/TempDir.h"
#include "tests/unit/app/FakeModule.h"

namespace playerx::session {
namespace {

using model::ItemState;

const QByteArray kTwo =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue>"
    "<DownloadItem title=\"A\" status=\"4\" fileSize=\"7\" percentDownloaded=\"100\" "
    "url=\"http://h/a.avi?x=1&amp;y=2\"/>"
    "<DownloadItem title=\"B\" status=\"1\" fileSize=\"0\" "
    "percentDownloaded=\"18446744073709551615\" url=\"\"/></DownloadQueue>\n";

std::vector<ItemState> two() {
  ItemState first;
  first.status = DownloadStatusCompleted;
  first.size = 7;
  first.percent = 100;
  first.url = "http://h/a.avi?x=1&y=2";
  ItemState second;
  second.percent = -1;
  return {first, second};
}

TEST(SavedQueueTest, AFileHoldsTheQueueThatItWasWrittenFrom) {
  const auto saved = savedItems(kTwo);
  ASSERT_TRUE(saved);
  EXPECT_TRUE(holds(*saved, two()));
}

TEST(SavedQueueTest, EveryDifferenceIsSeen) {
  const auto saved = savedItems(kTwo);
  ASSERT_TRUE(saved);
  std::vector<std::vector<ItemState>> others(6, two());
  others[0][0].status = DownloadStatusFailed;
  others[1][0].percent = 99;
  others[2][0].size = 8;
  others[3][0].url = "http://h/b.avi";
  others[4].pop_back();
  std::swap(others[5][0], others[5][1]);
  for (const auto& other : others) EXPECT_FALSE(holds(*saved, other));
}

TEST(SavedQueueTest, AnAddressThatTheFileSpellsInAnotherWayIsNoDifference) {
  const auto saved = savedItems(kTwo);
  std::vector<ItemState> queue = two();
  queue[0].url = "http://h/\x01.avi";
  EXPECT_TRUE(holds(*saved, queue));
}

TEST(SavedQueueTest, AFileOfNoBytesIsSetAside) {
  const support::TempDir folder;
  folder.write("downloadmanager.xml.unreadable", "older");
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

TEST(SavedQueueTest, AnEmptyQueueIsSavedAsSuch) {
  const auto saved = savedItems("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue/>\n");
  ASSERT_TRUE(saved);
  EXPECT_TRUE(holds(*saved, {}));
  EXPECT_FALSE(holds(*saved, two()));
}

TEST(SavedQueueTest, WhatIsNoQueueFileHoldsNothing) {
  EXPECT_FALSE(savedItems(""));
  EXPECT_FALSE(savedItems("<other/>"));
  EXPECT_FALSE(savedItems(kTwo.left(kTwo.size() - 20)));
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
  folder.write("downloadmanager.xml", kTwo.toStdString());
  EXPECT_EQ(saved.loadProblem(manager),
            "The queue file " + (folder / "downloadmanager.xml").string() +
                " could not be read a moment ago; nothing was changed. Try again.");
  manager.put("http://h/a.avi");
  EXPECT_EQ(saved.loadProblem(manager), "");
}

TEST(SavedQueueTest, ChangesThatAreNotInTheFileAreNamed) {
  const support::TempDir folder;
  folder.write("downloadmanager.xml", "<DownloadQueue/>");
  support::EventLog log;
  FakeModule manager(log);
  const SavedQueue saved(folder.path());
  EXPECT_EQ(saved.unsavedChanges(manager), "");
  manager.put("http://h/a.avi");
  EXPECT_NE(saved.unsavedChanges(manager).find("does not hold the last changes"),
            std::string::npos);
  EXPECT_FALSE(log.lines("manager.setPlayable").empty());
}

TEST(SavedQueueTest, OnlyFilesSetAsideSinceTheStartAreNamed) {
  const support::TempDir folder;
  folder.write("downloadmanager.xml.unreadable", "x");
  const SavedQueue saved(folder.path());
  EXPECT_TRUE(saved.filesSetAside().empty());
  const std::filesystem::path next = folder.write("downloadmanager.xml.unreadable2", "x");
  EXPECT_EQ(saved.filesSetAside(), std::vector<std::string>{next});
}

}  // namespace
}  // namespace playerx::session
