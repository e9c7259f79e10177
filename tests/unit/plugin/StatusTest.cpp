#include "tests/unit/plugin/ManagerTest.h"

namespace {

using Lines = std::vector<std::string>;

/// Reports of a state.
class StatusTest : public ManagerTest {
 protected:
  void SetUp() override {
    startAsleep("A1 B1 C5");
    forgetFile();
    log_.clear();
  }
};

TEST_F(StatusTest, AStatusIsStoredAndTheItemAnnounced) {
  const Lines announced{"view.itemChanged " + std::to_string(id("A"))};
  EXPECT_TRUE(manager().updateStatus(id("A"), DownloadStatusStarting));
  EXPECT_EQ(queue(), "A2 B1 C5");
  EXPECT_EQ(notices(), announced);
  EXPECT_EQ(written(), "A2 B1 C5");
}

TEST_F(StatusTest, AFailedItemIsAnnouncedMovedToTheBottomAndTheListAnnounced) {
  const Lines announced{"view.itemChanged " + std::to_string(id("A")), "view.listChanged"};
  EXPECT_TRUE(manager().updateStatus(id("A"), DownloadStatusFailed));
  EXPECT_EQ(queue(), "B1 C5 A6");
  EXPECT_EQ(notices(), announced);
}

TEST_F(StatusTest, ACompletedItemStaysCompleted) {
  manager().updateStatus(id("B"), DownloadStatusCompleted);
  EXPECT_TRUE(manager().updateStatus(id("B"), DownloadStatusQueued));
  EXPECT_EQ(queue(), "A1 C5 B4");
}

TEST_F(StatusTest, ThePlayerIsGivenPathAndSessionOfACompletedItem) {
  manager().updatePath(id("A"), L"/films/a.vesk");
  item("A").setUID(99);
  manager().updateStatus(id("A"), DownloadStatusCompleted);
  EXPECT_EQ(log_.lines("player."), Lines{"player.finished /films/a.vesk 99"});
  EXPECT_EQ(context_.holds("com.vesk.playerX.pluginInterface.Player"), 0);
}

TEST_F(StatusTest, TheViewIsAskedItsQuestionAfterwards) {
  for (const bool answer : {true, false}) {
    log_.clear();
    view_.answerKeepsRunning(answer);
    EXPECT_TRUE(manager().updateStatus(id("A"), DownloadStatusStarting));
    ASSERT_EQ(log_.lines("view.").size(), 2U);
    EXPECT_EQ(log_.lines("view.").back(), "view.keepsRunning");
    EXPECT_EQ(queue(), "A2 B1 C5");
  }
}

TEST_F(StatusTest, AnUnknownItemIsFalseAndChangesNothing) {
  EXPECT_FALSE(manager().updateStatus(0, DownloadStatusCompleted));
  EXPECT_EQ(queue(), "A1 B1 C5");
  EXPECT_EQ(log_.lines(), Lines{"view.keepsRunning"});
  EXPECT_FALSE(isWritten());
}

TEST_F(StatusTest, ACompletionIsToldOfInThisOrder) {
  const Lines told{"view.itemChanged " + std::to_string(id("A")), "view.listChanged",
                   "player.finished " + mediaFile("A.vesk").string() + " 0", "view.keepsRunning"};
  manager().updateStatus(id("A"), DownloadStatusCompleted);
  EXPECT_EQ(log_.lines(), told);
}

}  // namespace
