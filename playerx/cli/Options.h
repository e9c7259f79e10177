#pragma once

#include <optional>
#include <string>
#include <vector>

#include "playerx/app/session/Places.h"

namespace playerx::cli {

/// What the command line asks for.
struct Options {
  enum Command { kGet, kList, kRemove, kRetry, kMove, kClear, kExplain };
  enum Direction { kUp, kDown, kTop, kBottom };

  Command command = kGet;
  session::SessionOptions session;
  bool json = false;
  bool diagnostics = false;  ///< show what the module prints for its engineers
  bool play = false;
  std::vector<std::string> inputs;  ///< addresses and ticket files
  int position = 0;                 ///< in the queue, from 1 on
  Direction direction = kUp;
};

/// Exit statuses of the program.
enum ExitStatus : int {
  kExitDone = 0,
  kExitFailed = 1,
  kExitUsage = 2,
  kExitInterrupted = 130,
};

/// Reads the arguments. Prints help or a complaint itself; then it returns nullopt, and `*status`
/// is what the program exits with.
std::optional<Options> parseOptions(int argc, const char* const* argv, int* status);

}  // namespace playerx::cli
