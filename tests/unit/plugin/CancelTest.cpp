#include <algorithm>

#include "tests/unit/plugin/ManagerFixture.h"

namespace {

class CancelTest : public ManagerFixture {};

TEST_F(CancelTest, ACancelledTransferStaysInPlaceAndStartsAnew) {
  start("A1 B1");
  const auto uid = transferOf("A");
  await("A3 B1");
  manager().cancel();
  EXPECT_EQ(stoppedSessions(), Uids{uid});
  EXPECT_FALSE(manager().isPaused());
  transferOf("A");
  await("A3 B1");
}

TEST_F(CancelTest, CancellingNothingDoesNothing) {
  startAsleep("A1");
  log_.clear();
  manager().cancel();
  EXPECT_EQ(queue(), "A1");
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(CancelTest, CancellingStopsTheSessionOfAHeldItemThatComesFirst) {
  startAsleep("A1");
  library_.nextUid(50);
  wakeScheduler();
  transferOf("A");
  await("A3");
  manager().updateStatus(id("A"), DownloadStatusHeld);
  item("A").setUID(77);
  manager().cancel();
  EXPECT_EQ(stoppedSessions(), (Uids{77, 50})) << "its own, then whatever runs";
}

TEST_F(CancelTest, CancellingStopsTheHeadsOwnSessionOnlyWhileItIsActive) {
  start("A1");
  transferOf("A");
  await("A3");
  manager().pause();
  item("A").setUID(77);
  const auto stopsOfA = [this](DownloadStatusEnumType status) {
    const Uids before = stoppedSessions();
    manager().updateStatus(id("A"), status);
    manager().cancel();
    const Uids after = stoppedSessions();
    return std::count(after.begin(), after.end(), 77U) -
           std::count(before.begin(), before.end(), 77U);
  };
  for (const int status : {0, 1, 5, 6}) {
    EXPECT_EQ(stopsOfA(static_cast<DownloadStatusEnumType>(status)), 0) << status;
  }
  for (const int status : {2, 3, 7}) {
    EXPECT_EQ(stopsOfA(static_cast<DownloadStatusEnumType>(status)), 1) << status;
  }
}

}  // namespace
