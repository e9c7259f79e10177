#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "tests/support/Process.h"

namespace system_test {

/// A player that is halted at every system call that changes which files there are or brings one to
/// the disk, so that it can be killed at exactly that instant. Owner: the test, on the thread that
/// made it; no other child of that thread may end meanwhile. Failure: std::runtime_error when the
/// system does not let the player be traced.
class TracedPlayer {
 public:
  /// Told the call that is about to happen ("renameat2 <from> <to>"); true to kill the player.
  using Decision = std::function<bool(const std::string& call)>;

  explicit TracedPlayer(support::ProcessOptions options);
  ~TracedPlayer();
  TracedPlayer(const TracedPlayer&) = delete;
  TracedPlayer& operator=(const TracedPlayer&) = delete;

  /// Lets the player run until it has ended or was killed on demand. Returns the call before which
  /// it was killed; nothing when it ended by itself.
  std::optional<std::string> run(const Decision& isTheInstant);

  support::Process& process() { return *process_; }

 private:
  void seize() const;
  std::optional<pid_t> nextHalted() const;

  std::unique_ptr<support::Process> process_;
};

}  // namespace system_test
