#include <gtest/gtest.h>

#include <csignal>

#include "playerx/player/PlayerProgram.h"
#include "tests/support/WaitFor.h"

namespace playerx {
namespace {

TEST(PlayerProgramTest, TheCommandIsSplitWithTheLocationBehind) {
  EXPECT_EQ(playerProgram("/bin/echo -n \"two words\"", "/films/a b.avi"),
            (QStringList{"/bin/echo", "-n", "two words", "/films/a b.avi"}));
}

TEST(PlayerProgramTest, AProgramIsFoundInThePath) {
  EXPECT_TRUE(playerProgram("sh", "x")->first().endsWith("/sh"));
}

TEST(PlayerProgramTest, AProgramThatIsNotThereIsNone) {
  EXPECT_EQ(playerProgram("no-such-player-program", "x"), std::nullopt);
}

TEST(PlayerProgramTest, AStartedProgramLivesUntilItEnds) {
  const long long pid = startProgram({"/bin/sleep", "600"});
  ASSERT_GT(pid, 0);
  EXPECT_TRUE(isAlive(pid));
  kill(static_cast<pid_t>(pid), SIGKILL);
  EXPECT_TRUE(support::waitFor([pid] { return !isAlive(pid); }));
}

TEST(PlayerProgramTest, NoProcessIsAliveUnderZero) { EXPECT_FALSE(isAlive(0)); }

}  // namespace
}  // namespace playerx
