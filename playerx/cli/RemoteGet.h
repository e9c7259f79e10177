#pragma once

#include <map>
#include <optional>
#include <set>
#include <vector>

#include "playerx/app/door/QueueClient.h"
#include "playerx/cli/Options.h"

namespace playerx::cli {

class Reporter;
class WakeUp;

/// The command that adds films and waits for them, while another process has the queue. Used on the
/// main thread.
class RemoteGet {
 public:
  /// Nothing is owned; everything outlives the command. `options` are those of `get` or `watch`.
  RemoteGet(const Options& options, door::QueueClient& client, Reporter& reporter, WakeUp& wakeUp);

  /// Hands the inputs over and shows what happens to their films until they have come, or to all
  /// films until the other process ends for `watch`. Returns the program's exit status; nullopt
  /// when the other process has ended before: then the caller goes on with `remainder`.
  std::optional<int> run();

  /// What is left to be done of the request.
  session::Request remainder() const;

  /// The exit status that what has come so far amounts to.
  int status() const;

 private:
  bool sendRequests();
  bool takeAnswers();
  void mindSilence();
  void take(const session::Reply& reply);
  void take(const session::QueueEvent& event);
  void show(const session::QueueEvent& event);
  void beginToWait(const session::Reply& reply);
  bool isOwn(const session::QueueEvent& event) const;
  bool isDone() const;
  void tellWhatIsLeft();
  int interrupted();

  const Options& options_;
  door::QueueClient& client_;
  Reporter& reporter_;
  WakeUp& wakeUp_;

  int replies_ = 0;  ///< the first is to "watch", the second to the request, later ones to "ping"
  bool isAsked_ = false;  ///< whether the other process still answers
  bool isSaidSilent_ = false;
  std::vector<session::QueueEvent> early_;  ///< before it was known which films are our own
  std::set<unsigned int> own_;              ///< films that the request was about
  std::map<unsigned int, std::string>
      left_;                     ///< those that have not come yet, with their addresses
  std::set<unsigned int> lost_;  ///< those of them that have failed, or left the queue
  bool somethingRefused_ = false;
};

}  // namespace playerx::cli
