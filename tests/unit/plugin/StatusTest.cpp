#include "tests/unit/plugin/ManagerFixture.h"

namespace {

using Lines = std::vector<std::string>;

/// Reports of a state.
class StatusTest : public ManagerFixture {
 protected:
  void SetUp() override {
    startAsleep("A1 B1 C5");
    forgetFile();
    log_.clear();
  }

  std::string announcementOf(const std::string& title) {
    return "view.itemChanged " + std::to_string(id(title));
  }

  std::string finished(const std::string& title) {
    return "player.finished " + mediaFile(title + ".vesk").string() + " 0";
  }

  /// Becomes the queue as it is written when the view hears that the list has changed.
  const std::string& writtenWhenTheListIsAnnounced() {
    view_.onEvent([this](const std::string& line) {
      if (line == "view.listChanged") list_ = written();
    });
    return list_;
  }

 private:
  std::string list_;
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

TEST_F(StatusTest, ACompletedItemIsAnnouncedThenTheListThenThePlayerIsToldThenTheViewIsAsked) {
  const Lines told{announcementOf("A"), "view.listChanged", finished("A"), "view.keepsRunning"};
  const std::string& list = writtenWhenTheListIsAnnounced();
  manager().updateStatus(id("A"), DownloadStatusCompleted);
  EXPECT_EQ(log_.lines(), told);
  EXPECT_EQ(list, "B1 C5 A4");
}

TEST_F(StatusTest, AFailedItemIsAnnouncedThenTheListThenTheViewIsAsked) {
  const Lines told{announcementOf("A"), "view.listChanged", "view.keepsRunning"};
  const std::string& list = writtenWhenTheListIsAnnounced();
  manager().updateStatus(id("A"), DownloadStatusFailed);
  EXPECT_EQ(log_.lines(), told);
  EXPECT_EQ(list, "B1 C5 A6");
}

TEST_F(StatusTest, ThePlayerIsGivenThePathAsItIsAfterTheAnnouncements) {
  view_.onEvent([this](const std::string& line) {
    if (line != "view.listChanged") return;
    item("A").setPath(L"/films/moved.vesk");
    item("A").setUID(99);
  });
  manager().updateStatus(id("A"), DownloadStatusCompleted);
  EXPECT_EQ(log_.lines("player."), Lines{"player.finished /films/moved.vesk 99"});
}

TEST_F(StatusTest, ThePlayerIsToldOfAFilmWhoseItemIsRemovedMeanwhile) {
  const unsigned int a = id("A");
  view_.onEvent([this, a](const std::string& line) {
    if (line == "view.listChanged") manager().remove(a);
  });
  EXPECT_TRUE(manager().updateStatus(a, DownloadStatusCompleted));
  EXPECT_EQ(queue(), "B1 C5");
  EXPECT_EQ(log_.lines("player."), Lines{finished("A")});
}

TEST_F(StatusTest, AStatusThatDoesNotTakeStillMovesTheItem) {
  manager().updateStatus(id("A"), DownloadStatusCompleted);
  manager().updateStatus(id("B"), DownloadStatusCompleted);
  ASSERT_EQ(queue(), "C5 A4 B4");
  const Lines told{announcementOf("A"), "view.listChanged", "view.keepsRunning"};
  log_.clear();
  EXPECT_TRUE(manager().updateStatus(id("A"), DownloadStatusFailed));
  EXPECT_EQ(queue(), "C5 B4 A4");
  EXPECT_EQ(log_.lines(), told);
}

TEST_F(StatusTest, ACompletedItemThatCompletesAgainIsToldOfAgain) {
  manager().updateStatus(id("A"), DownloadStatusCompleted);
  log_.clear();
  EXPECT_TRUE(manager().updateStatus(id("A"), DownloadStatusCompleted));
  EXPECT_EQ(log_.lines("player."), Lines{finished("A")});
}

TEST_F(StatusTest, ACompletedItemThatIsQueuedIsAnnouncedAlone) {
  manager().updateStatus(id("A"), DownloadStatusCompleted);
  const Lines told{announcementOf("A"), "view.keepsRunning"};
  log_.clear();
  EXPECT_TRUE(manager().updateStatus(id("A"), DownloadStatusQueued));
  EXPECT_EQ(queue(), "B1 C5 A4");
  EXPECT_EQ(log_.lines(), told);
}

TEST_F(StatusTest, WithoutAViewThePlayerIsToldAndNobodyIsAsked) {
  manager().setViewInterface(nullptr);
  EXPECT_TRUE(manager().updateStatus(id("A"), DownloadStatusCompleted));
  EXPECT_EQ(queue(), "B1 C5 A4");
  EXPECT_EQ(log_.lines(), Lines{finished("A")});
  EXPECT_FALSE(isWritten());
}

}  // namespace
