#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "playerx/app/door/DoorClient.h"
#include "playerx/app/door/Protocol.h"

namespace playerx::door {

/// The queue of another process. Used by one thread; needs no event loop.
class QueueClient {
 public:
  /// After so long without a word the other process is asked whether it is still there.
  static constexpr std::chrono::milliseconds kSilence{5000};

  /// The sentence on a process that does not answer even then.
  static constexpr char kSilent[] =
      "The player that holds the queue does not answer; it may be stopped: continue or close it.";

  enum class Outcome {
    kQueue,         ///< requests may be sent
    kNoServer,      ///< no process serves the queue
    kBusy,          ///< a process does, and has no room for more now: `problem` says so
    kIncompatible,  ///< a process does, but speaks another protocol: `problem` says why
  };

  /// Looks for the process that holds the queue of this folder, `longest` at most. Once.
  Outcome connect(const std::string& dataFolder, std::chrono::milliseconds longest);

  /// Sends a request; its reply is among the answers. False when it could not be sent: then
  /// `problem` says why.
  bool send(const session::Request& request);

  /// The next answer; waits for it up to `longest`. Nullopt when none has come or none will: then
  /// `problem` says why.
  std::optional<Answer> receive(std::chrono::milliseconds longest);

  /// Sends a request and waits for its reply, `longest` at most; what happens to the queue
  /// meanwhile is not told. Nullopt without one: `problem` says why.
  std::optional<session::Reply> ask(const session::Request& request,
                                    std::chrono::milliseconds longest);

  /// One sentence on why no more answers will come; empty while they may.
  const std::string& problem() const { return problem_; }

  /// Whether the other end has ended, rather than being one that cannot be talked with.
  bool hasGone() const { return !door_.isConnected(); }

  /// As that of `DoorClient`.
  int descriptor() const { return door_.descriptor(); }

 private:
  DoorClient door_;
  std::string problem_;
};

}  // namespace playerx::door
