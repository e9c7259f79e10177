#pragma once

#include <optional>
#include <string>
#include <vector>

#include "playerx/app/session/Places.h"
#include "playerx/app/session/QueueRequest.h"

namespace playerx::cli {

/// What the command line asks for.
struct Options {
  enum Command {
    kGet,      ///< carry `request` out, then download until nothing is left
    kRequest,  ///< carry `request` out
    kExplain,  ///< say what the tickets among the inputs of `request` would download
  };

  Command command = kGet;
  session::SessionOptions session;
  session::Request request;
  std::vector<std::string> inputFiles{};  ///< lists of more inputs; "-": standard input
  bool quiet = false;                     ///< print failures and sentences alone
  bool json = false;
  bool diagnostics = false;  ///< show what the module prints for its engineers
  bool isLong = false;       ///< list the addresses as well
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
