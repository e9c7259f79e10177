#include <gtest/gtest.h>

#include <filesystem>

#include "playerx/app/session/SavedQueue.h"
#include "tests/support/TempDir.h"

namespace playerx {
namespace {

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
  EXPECT_EQ(SavedQueue(folder.path()).obstacle(), "");
  folder.write("downloadmanager.xml", "x");
  EXPECT_EQ(SavedQueue(folder.path()).obstacle(), "");
  EXPECT_EQ(support::readFile(folder / "downloadmanager.xml"), "x");
}

TEST(SavedQueueTest, AnObstacleIsNamedWithWhatCanBeDone) {
  const support::TempDir folder;
  std::filesystem::create_directories(folder / "downloadmanager.xml");
  EXPECT_EQ(SavedQueue(folder.path()).obstacle(),
            "The queue file " + (folder / "downloadmanager.xml").string() +
                " cannot be written (Is a directory); free some space or make it writable, or "
                "choose another folder with --data.");
}

}  // namespace
}  // namespace playerx
