#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

#include "playerx/cli/SlotQuestion.h"

namespace playerx::cli {
namespace {

constexpr int kDeclined = 255;  // -1 as an exit status

/// Asks on a terminal of its own on which `typed` has been typed; exits with the answer.
[[noreturn]] void ask(std::string_view typed) {
  int keyboard = -1;
  int terminal = -1;
  if (openpty(&keyboard, &terminal, nullptr, nullptr, nullptr) != 0) std::_Exit(100);
  dup2(terminal, STDIN_FILENO);
  dup2(terminal, STDERR_FILENO);
  if (write(keyboard, typed.data(), typed.size()) < 0) std::_Exit(101);
  std::_Exit(askForSlot("Film"));
}

TEST(SlotQuestionTest, ANumberIsTheAnswer) {
  EXPECT_EXIT(ask("2\n"), testing::ExitedWithCode(2), "");
}

TEST(SlotQuestionTest, EverythingElseDeclines) {
  for (const char* typed : {"\n", "no\n", "-3\n", "2 x\n", "\x04"}) {
    EXPECT_EXIT(ask(typed), testing::ExitedWithCode(kDeclined), "") << typed;
  }
}

TEST(SlotQuestionTest, WithoutATerminalTheQuestionIsDeclined) {
  EXPECT_EXIT(
      {
        close(STDIN_FILENO);
        std::_Exit(askForSlot("Film"));
      },
      testing::ExitedWithCode(kDeclined), "");
}

}  // namespace
}  // namespace playerx::cli
