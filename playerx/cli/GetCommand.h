#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "playerx/app/model/ItemState.h"
#include "playerx/app/model/SpeedMeter.h"
#include "playerx/app/reasons/FailureExplainer.h"
#include "playerx/app/session/TransferKnowledge.h"

namespace VeskPlayerX {
class DownloadManagerInterface;
}

namespace playerx {

class ConsoleMessages;
class QueueView;
class Reporter;
class WakeUp;
struct Options;
struct QueueChange;

/// The command that adds films and downloads until nothing is left. Used on the main thread, with
/// the module's view attached.
class GetCommand {
 public:
  /// Nothing is owned; everything outlives the command. The queue as it is now is what later
  /// changes are told against, so the module's scheduler must still be held back.
  GetCommand(const Options& options, VeskPlayerX::DownloadManagerInterface& manager,
             QueueView& view, ConsoleMessages& messages, Reporter& reporter, WakeUp& wakeUp,
             TransferKnowledge knowledge);

  /// Adds the inputs and works until nothing is left or the user interrupts. Returns the program's
  /// exit status.
  int run();

 private:
  std::optional<int> addInputs();
  bool addOne(const std::string& input);
  bool addAddress(const std::string& address);
  bool isWaiting(const std::string& address) const;
  bool addTicket(const std::string& path);
  bool refuse(const std::string& argument, const FailureReason& reason);
  int workUntilDone(int refused);
  void lookAtQueue();
  void report(const QueueChange& change);
  void noteOddity(const ItemState& film);
  void reportSpeed();
  bool measureSpeed(const ItemState& item);
  void reportAnswers();
  void passMessagesOn();
  void playWhatIsReady(const ItemState& item);
  bool isDone() const;
  int park();

  const Options& options_;
  VeskPlayerX::DownloadManagerInterface& manager_;
  QueueView& view_;
  ConsoleMessages& messages_;
  Reporter& reporter_;
  WakeUp& wakeUp_;
  const TransferKnowledge knowledge_;
  FailureExplainer explainer_;

  std::vector<ItemState> queue_;  ///< as last seen
  std::map<unsigned int, SpeedMeter> speeds_;
  std::set<unsigned int> played_;  ///< items handed to the player
  std::string lastWords_;          ///< said since the last outcome
  bool somethingFailed_ = false;
};

}  // namespace playerx
