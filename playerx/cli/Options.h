#pragma once

#include <optional>
#include <string>
#include <vector>

namespace playerx {

/// What the command line asks for.
struct Options {
  enum Command { kGet, kList, kRemove, kRetry, kMove, kClear, kExplain };
  enum Direction { kUp, kDown, kTop, kBottom };

  Command command = kGet;
  std::string dataFolder;    ///< empty: the user's own
  std::string mediaFolder;   ///< empty: as the preferences say
  std::string pluginFolder;  ///< empty: beside the program
  std::string caFile;        ///< empty: the system's authorities
  std::string player;        ///< program that plays; empty: "mpv" when present
  std::string services;      ///< address of the online services; empty: as the preferences say
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

/// Reads the arguments. Prints help or a complaint itself; then there are no options and `*status`
/// is what the program exits with.
std::optional<Options> parseOptions(int argc, const char* const* argv, int* status);

}  // namespace playerx
