#include <gmock/gmock.h>

#include "download/SessionGate.h"

namespace download {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr LibraryReport progress(unsigned long long uid, int percent) {
  return {LibraryReport::Kind::kProgress, uid, percent};
}

TEST(SessionGate, IsClosedAtFirst) {
  SessionGate gate;
  EXPECT_FALSE(gate.admits(progress(0, 1)));
  EXPECT_FALSE(gate.admits(progress(1, 1)));
  EXPECT_THAT(gate.open(1), IsEmpty());
}

/// A gate on which this session has come and gone.
SessionGate gateAfter(unsigned long long uid) {
  SessionGate gate;
  gate.expect();
  gate.open(uid);
  gate.close();
  return gate;
}

TEST(SessionGate, KeepsEarlierSessionsFromThePresentOne) {
  SessionGate gate = gateAfter(4);
  gate.expect();
  gate.open(5);
  EXPECT_TRUE(gate.admits(progress(5, 1)));
  EXPECT_FALSE(gate.admits(progress(4, 1)));
  EXPECT_TRUE(gate.admits(progress(0, 1))) << "a library that does not number its reports";
}

TEST(SessionGate, AdmitsASessionWhoseIdAnEarlierOneHad) {
  SessionGate gate = gateAfter(5);
  gate.expect();
  gate.open(5);
  EXPECT_TRUE(gate.admits(progress(5, 1)));
}

TEST(SessionGate, HasNoSessionOfARefusedStart) {
  SessionGate gate = gateAfter(0);
  gate.expect();
  gate.open(5);
  EXPECT_TRUE(gate.admits(progress(0, 1)));
}

TEST(SessionGate, RemembersAsManyEarlierSessionsAsItSays) {
  SessionGate gate = gateAfter(2'000'000);
  for (unsigned long long uid = 1; uid <= SessionGate::kMostEarlier; ++uid) {
    gate.expect();
    gate.open(uid);
    gate.close();
  }
  gate.expect();
  gate.open(1'000'000);
  EXPECT_TRUE(gate.admits(progress(2'000'000, 1)));
  EXPECT_FALSE(gate.admits(progress(1, 1)));
}

TEST(SessionGate, HoldsReportsUntilTheSessionIsKnown) {
  SessionGate gate = gateAfter(4);
  gate.expect();
  EXPECT_FALSE(gate.admits(progress(5, 1)));
  EXPECT_FALSE(gate.admits(progress(4, 2)));
  EXPECT_FALSE(gate.admits(progress(5, 3)));
  EXPECT_THAT(gate.open(5), ElementsAre(progress(5, 1), progress(5, 3)));
}

TEST(SessionGate, DropsWhatWasHeldWhenItCloses) {
  SessionGate gate;
  gate.expect();
  gate.admits(progress(5, 1));
  gate.close();
  EXPECT_FALSE(gate.admits(progress(5, 2)));
  gate.expect();
  EXPECT_THAT(gate.open(5), IsEmpty());
}

TEST(SessionGate, AdmitsNothingAfterTheSession) {
  EXPECT_FALSE(gateAfter(5).admits(progress(5, 1)));
}

}  // namespace
}  // namespace download
