#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "playerx/cli/StandardOutput.h"
#include "tests/support/TempDir.h"

namespace playerx::cli {
namespace {

/// Prints to standard output in three ways, in a process of its own whose standard output is
/// `file`.
[[noreturn]] void print(const std::filesystem::path& file,
                        StandardOutput::Diagnostics diagnostics) {
  dup2(open(file.c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
  {
    StandardOutput output(diagnostics);
    std::printf("from a library\n");
    output.stream() << "from the program\n";
  }
  std::printf("afterwards\n");
  std::fflush(stdout);
  std::_Exit(0);
}

TEST(StandardOutputTest, OnlyTheProgramsOwnLinesAreLeft) {
  const support::TempDir folder;
  const std::filesystem::path file = folder / "out";
  EXPECT_EXIT(print(file, StandardOutput::Diagnostics::kDropped), testing::ExitedWithCode(0), "^$");
  EXPECT_EQ(support::readFile(file), "from the program\nafterwards\n");
}

TEST(StandardOutputTest, DiagnosticsGoToStandardErrorWhenAskedFor) {
  const support::TempDir folder;
  const std::filesystem::path file = folder / "out";
  EXPECT_EXIT(print(file, StandardOutput::Diagnostics::kToStandardError),
              testing::ExitedWithCode(0), "from a library");
  EXPECT_EQ(support::readFile(file), "from the program\nafterwards\n");
}

}  // namespace
}  // namespace playerx::cli
