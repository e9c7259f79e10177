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

TEST(SessionGate, AdmitsThePresentSessionAlone) {
  SessionGate gate;
  gate.expect();
  gate.open(5);
  EXPECT_TRUE(gate.admits(progress(5, 1)));
  EXPECT_FALSE(gate.admits(progress(4, 1)));
}

TEST(SessionGate, HoldsReportsUntilTheSessionIsKnown) {
  SessionGate gate;
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
  SessionGate gate;
  gate.expect();
  gate.open(5);
  gate.close();
  EXPECT_FALSE(gate.admits(progress(5, 1)));
}

}  // namespace
}  // namespace download
