#include <thread>

#include "tests/unit/plugin/ManagerFixture.h"

namespace {

/// Moves during a transfer.
class MovesOfRunningTest : public ManagerFixture {
 protected:
  /// Starts with A queued on top and waits until it is transferred; its session.
  unsigned long long runFirst(const std::string& queue) {
    start(queue);
    const auto session = transferOf("A");
    await("A3" + queue.substr(2));
    return session;
  }
};

TEST_F(MovesOfRunningTest, MoveUpOfTheSecondItemStopsTheTransferAndStartsTheOther) {
  const auto uid = runFirst("A1 B1");
  EXPECT_TRUE(manager().moveUp(id("B")));
  EXPECT_EQ(stoppedSessions(), Uids{uid});
  transferOf("B");
  await("B3 A1");
}

TEST_F(MovesOfRunningTest, MoveDownOfTheHeadStopsTheTransferAndStartsTheOther) {
  const auto uid = runFirst("A1 B1");
  EXPECT_TRUE(manager().moveDown(id("A")));
  EXPECT_EQ(stoppedSessions(), Uids{uid});
  transferOf("B");
  await("B3 A1");
}

TEST_F(MovesOfRunningTest, BothItemsAreQueuedWhenTheMoveIsAnnounced) {
  runFirst("A1 B1");
  std::string seen;
  view_.onEvent([&, host = std::this_thread::get_id()](const std::string& line) {
    if (line == "view.listChanged" && std::this_thread::get_id() == host) seen = queue();
  });
  manager().moveUp(id("B"));
  view_.onEvent({});
  EXPECT_EQ(seen, "B1 A1");
}

TEST_F(MovesOfRunningTest, AMoveOfTheHeadStopsItsOwnSession) {
  const auto uid = runFirst("A1 B1");
  item("A").setUID(77);
  manager().moveUp(id("B"));
  EXPECT_EQ(stoppedSessions(), (Uids{77, uid})) << "its own, then whatever runs";
}

TEST_F(MovesOfRunningTest, MovesOfThePausedHeadStopNothing) {
  runFirst("A1 B1");
  manager().pause();
  item("A").setUID(77);
  const Uids before = library_.stopped();
  EXPECT_TRUE(manager().moveUp(id("B")));
  EXPECT_TRUE(manager().moveDown(id("B")));
  EXPECT_EQ(queue(), "A0 B1");
  EXPECT_EQ(library_.stopped(), before);
}

TEST_F(MovesOfRunningTest, MoveToBottomOfTheRunningItemStartsTheNextOnce) {
  runFirst("A1 B1 C1");
  manager().moveToBottom(id("A"));
  transferOf("B");
  await("B3 C1 A1");
  EXPECT_EQ(library_.sessionCount(), 2U);
}

TEST_F(MovesOfRunningTest, MovesFartherDownLeaveTheTransferAlone) {
  runFirst("A1 B1 C1");
  manager().moveUp(id("C"));
  manager().moveDown(id("C"));
  EXPECT_TRUE(stoppedSessions().empty());
  EXPECT_EQ(queue(), "A3 B1 C1");
}

TEST_F(MovesOfRunningTest, AMoveThatCannotMoveLeavesTheTransferAlone) {
  runFirst("A1 B4");
  EXPECT_FALSE(manager().moveDown(id("A")));
  EXPECT_FALSE(manager().moveUp(id("A")));
  EXPECT_TRUE(stoppedSessions().empty());
  EXPECT_EQ(queue(), "A3 B4");
}

TEST_F(MovesOfRunningTest, MoveToTopOfAnyItemStartsItAtOnce) {
  runFirst("A1 B1 C1");
  manager().moveToTop(id("C"));
  transferOf("C");
  await("C3 A1 B1");
}

}  // namespace
