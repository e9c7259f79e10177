#include <map>

#include "tests/unit/plugin/ManagerFixture.h"

namespace {

using Lines = std::vector<std::string>;

/// Moves while nothing is picked.
class MovesTest : public ManagerFixture {
 protected:
  void begin(const std::string& queue) {
    startAsleep(queue);
    log_.clear();
  }
  void beginPaused(const std::string& queue) {
    startAsleep(queue);
    manager().pause();
    log_.clear();
  }
};

TEST_F(MovesTest, MoveUpBelowTheHeadChangesTwoPlacesAndNoStatus) {
  begin("A1 B1 C5");
  EXPECT_TRUE(manager().moveUp(id("C")));
  EXPECT_EQ(queue(), "A1 C5 B1");
  EXPECT_EQ(notices(), Lines{"view.listChanged"});
  EXPECT_EQ(written(), "A1 C5 B1");
}

TEST_F(MovesTest, MoveUpOfTheSecondItemQueuesBoth) {
  begin("A3 B5 C1");
  EXPECT_TRUE(manager().moveUp(id("B")));
  EXPECT_EQ(queue(), "B1 A1 C1");
  EXPECT_FALSE(manager().isPaused());
}

TEST_F(MovesTest, MoveUpOfTheSecondItemWhilePausedHandsThePausedMarkOver) {
  beginPaused("A3 B1");
  ASSERT_EQ(queue(), "A0 B1");
  EXPECT_TRUE(manager().moveUp(id("B")));
  EXPECT_EQ(queue(), "B0 A1");
  EXPECT_TRUE(manager().isPaused());
}

TEST_F(MovesTest, MoveUpWhilePausedPastAnyStatus) {
  struct {
    const char* before;
    const char* after;
  } const cases[] = {{"A0 B4", "B4 A1"}, {"A0 B6", "B0 A1"}, {"A0 B5", "B0 A1"},
                     {"A6 B1", "B0 A1"}, {"A4 B1", "B0 A4"}, {"A5 B1", "B0 A1"}};
  for (const auto& one : cases) {
    beginPaused(one.before);
    ASSERT_EQ(queue(), one.before);
    EXPECT_TRUE(manager().moveUp(id("B")));
    EXPECT_EQ(queue(), one.after) << one.before;
    shutDown();
  }
}

TEST_F(MovesTest, MoveUpOfTheSecondItemQueuesWhatIsNotCompleted) {
  const std::map<std::string, std::string> after = {{"A1 B6", "B1 A1"}, {"A4 B1", "B1 A4"},
                                                    {"A1 B4", "B4 A1"}, {"A1 B0", "B1 A1"},
                                                    {"A1 B2", "B1 A1"}, {"A1 B3", "B1 A1"}};
  for (const auto& [before, wanted] : after) {
    begin(before);
    EXPECT_TRUE(manager().moveUp(id("B")));
    EXPECT_EQ(queue(), wanted) << before;
    shutDown();
  }
}

TEST_F(MovesTest, MoveUpKnowsNoBottom) {
  begin("A1 B1 C6 D4");
  EXPECT_TRUE(manager().moveUp(id("D")));
  EXPECT_TRUE(manager().moveUp(id("D")));
  EXPECT_EQ(queue(), "A1 D4 B1 C6");
}

TEST_F(MovesTest, MoveUpOfTheHeadOrOfNothingIsFalseAndSilent) {
  begin("A1 B1");
  EXPECT_FALSE(manager().moveUp(id("A")));
  EXPECT_FALSE(manager().moveUp(0));
  EXPECT_EQ(queue(), "A1 B1");
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(MovesTest, MoveDownBelowTheHeadChangesTwoPlacesAndNoStatus) {
  begin("A1 B3 C5");
  EXPECT_TRUE(manager().moveDown(id("B")));
  EXPECT_EQ(queue(), "A1 C5 B3");
  EXPECT_EQ(notices(), Lines{"view.listChanged"});
}

TEST_F(MovesTest, MoveDownOfTheHeadQueuesBoth) {
  for (const char* const before : {"A3 B5", "A1 B0", "A1 B1", "A1 B2", "A1 B3"}) {
    begin(before);
    EXPECT_TRUE(manager().moveDown(id("A"))) << before;
    EXPECT_EQ(queue(), "B1 A1") << before;
    EXPECT_FALSE(manager().isPaused()) << before;
    EXPECT_EQ(notices(), Lines{"view.listChanged"}) << before;
    shutDown();
  }
}

TEST_F(MovesTest, MoveDownOfTheHeadWhilePausedHandsThePausedMarkOver) {
  beginPaused("A3 B1");
  EXPECT_TRUE(manager().moveDown(id("A")));
  EXPECT_EQ(queue(), "B0 A1");
  EXPECT_TRUE(manager().isPaused());
}

TEST_F(MovesTest, MoveDownAboveACompletedOrFailedItemIsFalseAndChangesNothing) {
  for (const char* const text : {"A3 B4", "A3 B6", "X1 A3 B4", "X1 A3 B6"}) {
    begin(text);
    EXPECT_FALSE(manager().moveDown(id("A"))) << text;
    EXPECT_EQ(queue(), text);
    EXPECT_TRUE(log_.lines().empty()) << text;
    shutDown();
  }
}

TEST_F(MovesTest, MoveDownOfThePausedHeadAboveTheBottomKeepsItsMark) {
  for (const char* const text : {"A0 B4", "A0 B6"}) {
    beginPaused(text);
    EXPECT_FALSE(manager().moveDown(id("A")));
    EXPECT_EQ(queue(), text);
    shutDown();
  }
}

TEST_F(MovesTest, MoveDownOfTheLastOrOfNothingIsFalseAndSilent) {
  begin("A1 B1");
  EXPECT_FALSE(manager().moveDown(id("B")));
  EXPECT_FALSE(manager().moveDown(0));
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(MovesTest, AnOnlyItemMovesNowhere) {
  begin("A3");
  EXPECT_FALSE(manager().moveUp(id("A")));
  EXPECT_FALSE(manager().moveDown(id("A")));
  EXPECT_EQ(queue(), "A3");
}

TEST_F(MovesTest, MoveToTopGoesStepByStep) {
  begin("A3 B1 C1 D1");
  manager().moveToTop(id("D"));
  EXPECT_EQ(queue(), "D1 A1 B1 C1");
  EXPECT_EQ(notices(), (Lines{"view.listChanged", "view.listChanged", "view.listChanged"}));
}

TEST_F(MovesTest, MoveToBottomStopsAboveTheCompletedAndFailed) {
  begin("A3 B1 C1 D6 E4");
  manager().moveToBottom(id("A"));
  EXPECT_EQ(queue(), "B1 C1 A1 D6 E4");
  EXPECT_EQ(notices(), (Lines{"view.listChanged", "view.listChanged"}));
}

TEST_F(MovesTest, MovingNothingToTheTopOrBottomDoesNothing) {
  begin("A1 B1");
  manager().moveToTop(0);
  manager().moveToBottom(0);
  EXPECT_EQ(queue(), "A1 B1");
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(MovesTest, TheQueueCountsAsPausedWhileItsHeadChanges) {
  begin("A3 B1");
  bool paused = false;
  view_.onEvent([&](const std::string&) { paused = manager().isPaused(); });
  manager().moveUp(id("B"));
  EXPECT_TRUE(paused);
  EXPECT_FALSE(manager().isPaused());
  paused = false;
  manager().moveDown(id("B"));
  EXPECT_TRUE(paused);
  EXPECT_FALSE(manager().isPaused());
}

TEST_F(MovesTest, APauseFromTheViewInTheMiddleOfAMoveIsNotLost) {
  begin("A3 B1");
  view_.onEvent([&](const std::string&) {
    view_.onEvent({});
    manager().pause();
  });
  manager().moveUp(id("B"));
  EXPECT_TRUE(manager().isPaused());
}

}  // namespace
