#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "playerx/app/model/QueueChanges.h"
#include "playerx/app/model/SpeedMeter.h"
#include "playerx/app/reasons/FailureExplainer.h"
#include "playerx/app/session/PlayerSession.h"
#include "playerx/cli/Options.h"

namespace playerx::cli {

class Reporter;
class WakeUp;

/// The command that adds films and downloads until nothing is left. Used on the main thread.
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
  void lookAtQueue();
  void report(const model::QueueChange& change);
  void reportSpeed();
  bool measureSpeed(const model::ItemState& item);
  void reportAnswers();
  void passMessagesOn();
  void playWhatIsReady(const model::ItemState& item);
  bool isDone() const;
  int park();

  const Options& options_;
  session::PlayerSession& session_;
  Reporter& reporter_;
  WakeUp& wakeUp_;
  reasons::FailureExplainer explainer_;

  std::vector<model::ItemState> queue_;  ///< as last seen
  std::map<unsigned int, model::SpeedMeter> speeds_;
  std::set<unsigned int> played_;  ///< items handed to the player
  std::string lastWords_;          ///< said since the last outcome
  bool somethingFailed_ = false;
};

}  // namespace playerx::cli
