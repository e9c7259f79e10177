#pragma once

#include <optional>
#include <set>
#include <string>

#include "playerx/app/door/QueueServer.h"
#include "playerx/app/model/Progress.h"
#include "playerx/app/session/QueueService.h"
#include "playerx/cli/Options.h"

namespace playerx::cli {

class Reporter;
class WakeUp;

/// The command that adds films and downloads until nothing is left, whether added here or by other
/// processes, which it serves meanwhile. Used on the main thread.
class GetCommand {
 public:
  /// Nothing is owned; everything outlives the command. The session is open for changes and not yet
  /// started: later changes are told against the queue as it is now. Its listener raises `wakeUp`.
  GetCommand(const Options& options, session::PlayerSession& session, Reporter& reporter,
             WakeUp& wakeUp, reasons::Probe probe);

  /// Starts the session, adds the inputs and works until nothing is left or the user interrupts.
  /// Returns the program's exit status.
  int run();

 private:
  std::optional<int> addInputs();
  bool addOne(const std::string& input);
  int workUntilDone(int refused);
  void tell(const session::QueueEvent& event);
  void tellQueue();
  int park();

  const Options& options_;
  session::PlayerSession& session_;
  Reporter& reporter_;
  WakeUp& wakeUp_;
  std::set<unsigned int> own_;     ///< items that the inputs have become
  std::set<unsigned int> failed_;  ///< items that have failed in this run
  std::set<std::string> notes_;    ///< that have been told of inputs
  model::QueueProgress told_;      ///< of the whole queue
  session::QueueService service_;
  door::QueueServer server_;
};

}  // namespace playerx::cli
