#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>

#include <cstdlib>

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace support {
namespace {

TEST(ProcessTest, OutputErrorsAndStatusAreKept) {
  Process process({"sh", "-c", "echo out; echo err >&2; exit 3"});
  EXPECT_EQ(process.wait(), 3);
  EXPECT_EQ(process.output(), "out\n");
  EXPECT_EQ(process.errors(), "err\n");
}

TEST(ProcessTest, InputFolderAndEnvironmentReachTheChild) {
  const TempDir dir;
  Process process(ProcessOptions{
      {"sh", "-c", "cat; pwd; echo $COLOUR"}, {{"COLOUR", "red"}}, {}, dir.path(), "typed\n"});
  EXPECT_EQ(process.wait(), 0);
  EXPECT_EQ(process.output(), "typed\n" + dir.path().string() + "\nred\n");
}

TEST(ProcessTest, VariablesThatChangeTrustAreNotInherited) {
  setenv("OPENSSL_CONF", "/nowhere", 1);
  Process process({"sh", "-c", "echo [$OPENSSL_CONF]"});
  EXPECT_EQ(process.wait(), 0);
  EXPECT_EQ(process.output(), "[]\n");
  unsetenv("OPENSSL_CONF");
}

TEST(ProcessTest, ASignalEndsItWithItsNumber) {
  Process process({"sh", "-c", "echo up; exec sleep 1000"});
  ASSERT_TRUE(process.waitForOutput("up"));
  EXPECT_TRUE(process.running());
  process.send(SIGTERM);
  EXPECT_EQ(process.wait(), 128 + SIGTERM);
}

TEST(ProcessTest, ATracedOneThatIsHaltedHasNotEnded) {
  Process process({"sh", "-c", "kill -STOP $$; exec sleep 1000"});
  siginfo_t state{};
  ASSERT_EQ(waitid(P_PID, static_cast<id_t>(process.pid()), &state, WSTOPPED | WNOWAIT), 0);
  ASSERT_EQ(ptrace(PTRACE_SEIZE, process.pid(), nullptr, PTRACE_O_EXITKILL), 0);
  EXPECT_TRUE(process.running());
  process.send(SIGKILL);
  EXPECT_EQ(process.wait(), 128 + SIGKILL);
}

TEST(ProcessTest, ItIsKilledWithItsOwner) {
  pid_t pid = 0;
  {
    const Process process({"sleep", "1000"});
    pid = process.pid();
  }
  EXPECT_EQ(::kill(pid, 0), -1);
}

TEST(ProcessTest, AProgramThatDoesNotExistEndsWith127) {
  EXPECT_EQ(Process({"no-such-program-anywhere"}).wait(), 127);
}

TEST(ProcessTest, WaitingGivesUpAtTheDeadline) {
  Process process({"sleep", "1000"});
  EXPECT_EQ(process.wait(std::chrono::milliseconds(20)), std::nullopt);
}

}  // namespace
}  // namespace support
