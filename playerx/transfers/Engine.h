#pragma once

#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "playerx/platform/GuardMutex.h"
#include "playerx/settings/TrustedAuthorities.h"
#include "playerx/transfers/FetchLoop.h"
#include "playerx/transfers/ReportDelivery.h"
#include "playerx/transfers/Session.h"
#include "playerx/transfers/Transfer.h"
#include "playerx/transfers/Tuning.h"
#include "playerx/transfers/WorkQueue.h"

// The chain a transfer passes through; an indented class is owned by the one above it. In brackets
// the thread that runs it.
//
//   Downloads             checks the wish, gives the uid                        [any caller]
//     ReportBook          the sessions, for whoever asks about them             [any caller]
//     ReportDelivery      the receiver's reports, one after the other           [reports]
//     Engine              takes sessions to begin and to stop                   [engine]
//       FetchLoop         libcurl's multi handle: all requests side by side     [engine]
//       WorkQueue         opens, syncs and places partials                      [files]
//       Transfer          one session at work, from its partial to its place    [engine]
//         Fetch           the present request, a libcurl handle in the loop     [engine]
//         Attempt         judges what it brings, appends to the partial         [engine]
//         Part            the bytes and their state                             [engine or files]
//
// Session, with its SessionLog, is shared by all of them and outlives its transfer. On the way:
// openPart [files] -> Fetch -> Attempt -> Part [engine] -> placeFilm [files] -> ReportDelivery.

namespace playerx::transfers {

/// The library's own thread, on which all sessions run side by side.
///
/// `start`, `stop` and `setTrust` may be called from any thread and return at once; sessions begin
/// in the order of `start`, and one that was stopped before has let go of its partial by then.
/// Destroyed, it ends all sessions as `stop` does and forgets completions that were taken note of.
class Engine {
 public:
  /// `delivery` outlives it.
  Engine(const Tuning& tuning, ReportDelivery& delivery, TrustedAuthorities trust);
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;
  ~Engine();

  void start(std::shared_ptr<Session> session);

  /// The session's completion counts as noted when it has been announced.
  void stop(std::shared_ptr<Session> session);

  /// For requests made from now on.
  void setTrust(const TrustedAuthorities& trust);

 private:
  using Clock = Transfer::Clock;
  using Work = std::function<void()>;

  /// A film that is in its place, while the library remembers that.
  struct Finished {
    std::shared_ptr<Session> session;
    PartPaths paths;
  };

  void post(Work work);
  void run();
  void doPosted();
  void workOn(Clock::time_point now);
  void settleEnded();
  std::chrono::milliseconds timeToWait(Clock::time_point now) const;
  void beginSession(const std::shared_ptr<Session>& session);
  void endSession(const std::shared_ptr<Session>& session);
  void keepFinished(const Transfer& transfer);
  void note(const Finished& finished);
  void noteOthers(const Wish& wish);
  void close();

  // Constant after construction.
  const Tuning tuning_;
  ReportDelivery& delivery_;

  // Guarded.
  mutable GuardMutex mutex_;
  std::deque<Work> posted_ KVPM_GUARDED_BY(mutex_);
  bool isClosing_ KVPM_GUARDED_BY(mutex_) = false;
  TrustedAuthorities trust_ KVPM_GUARDED_BY(mutex_);

  // The engine's thread alone.
  FetchLoop loop_;
  std::map<unsigned long long, std::shared_ptr<Transfer>> transfers_;
  std::vector<Finished> finished_;
  std::set<std::filesystem::path> notedIn_;  ///< folders with completions that were noted

  WorkQueue files_;
  Workshop workshop_;
  std::thread thread_;
};

}  // namespace playerx::transfers
