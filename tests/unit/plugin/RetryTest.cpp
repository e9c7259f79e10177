#include "tests/unit/plugin/ManagerFixture.h"

namespace {

using Lines = std::vector<std::string>;

class RetryTest : public ManagerFixture {};

TEST_F(RetryTest, RetryingAFailedItemPutsItFirstAndRestartsTheQueue) {
  start("A1 B6 C6");
  transferOf("A");
  await("A3 B6 C6");
  manager().retry(id("C"));
  EXPECT_FALSE(manager().isPaused());
  transferOf("C");
  await("C3 A1 B6");
}

TEST_F(RetryTest, RetryingAlsoEndsAPause) {
  startAsleep("A1 B6");
  manager().pause();
  wakeScheduler();
  manager().retry(id("B"));
  transferOf("B");
  await("B3 A1");
}

TEST_F(RetryTest, ARetriedItemIsQueuedBeforeTheQueueIsParked) {
  startAsleep("A3 B6");
  std::string first;
  view_.onEvent([&](const std::string&) {
    if (first.empty()) first = queue();
  });
  manager().retry(id("B"));
  view_.onEvent({});
  EXPECT_EQ(first, "A0 B1");
}

TEST_F(RetryTest, EachStepIsAnnounced) {
  startAsleep("A3 X1 B6");
  log_.clear();
  EXPECT_EQ(writtenDuring([this] { manager().retry(id("B")); }),
            (Lines{"A0 X1 B1", "A0 B1 X1", "B0 A1 X1", "B1 A1 X1"}));
  EXPECT_EQ(notices(), Lines(4, "view.listChanged"));
}

TEST_F(RetryTest, RetryingAnItemThatHasNotFailedDoesNothing) {
  startAsleep("A0 B1 C2 D3 E4 F5 G1");
  manager().updateStatus(id("G"), DownloadStatusHeld);
  log_.clear();
  for (const char* const title : {"A", "B", "C", "D", "E", "F", "G"}) manager().retry(id(title));
  manager().retry(0);
  EXPECT_EQ(queue(), "A0 B1 C2 D3 E4 F5 G7");
  EXPECT_TRUE(log_.lines().empty());
}

}  // namespace
