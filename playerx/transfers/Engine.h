#pragma once

#include <atomic>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "playerx/platform/GuardMutex.h"
#include "playerx/settings/TrustedAuthorities.h"
#include "playerx/transfers/FetchLoop.h"
#include "playerx/transfers/NetworkWatch.h"
#include "playerx/transfers/ReportDelivery.h"
#include "playerx/transfers/Session.h"
#include "playerx/transfers/Transfer.h"
#include "playerx/transfers/Tuning.h"
#include "playerx/transfers/WorkQueue.h"

// The chain a transfer passes through; an indented class is owned by the one above it. In brackets
// the thread that runs it.
//
//   Downloads             checks the request, gives the uid                     [any caller]
//     ReportBook          the sessions, for questions about them                [any caller]
//     ReportDelivery      the receiver's reports, one at a time                 [reports]
//     Engine              takes sessions to begin and to stop                   [engine]
//       FetchLoop         libcurl's multi handle: all requests side by side     [engine]
//       WorkQueue         what may have to wait for the disk                    [files]
//       Transfer          one session at work, from its partial to its place    [engine]
//         Fetch           the present request, a libcurl handle in the loop     [engine]
//         Attempt         judges what it brings, appends to the partial         [engine]
//         SessionFiles    hands the partial to the files thread and back        [engine]
//           Part          the bytes and their state                             [engine or files]
//
// Session, with its SessionLog, is shared by all of them and outlives its transfer. On the way:
// openPart -> Fetch -> Attempt -> Part -> placePart [engine, or files] -> ReportDelivery.

namespace playerx::transfers {

/// The library's own thread, on which all sessions run side by side.
///
/// The public operations may be called from any thread and return at once; sessions begin in the
/// order of `start`, and one that was stopped before has released its partial by then.
/// Destroyed, it ends all sessions as `stop` does.
///
/// A film keeps its mark for a moment after its completion was reported: until then the receiver
/// may not have saved it. Where confirmations are awaited it keeps it until the queue calls it
/// complete.
class Engine {
 public:
  /// `delivery` outlives it.
  Engine(const Tuning& tuning, ReportDelivery& delivery, TrustedAuthorities trust);
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;
  ~Engine();

  void start(std::shared_ptr<Session> session);

  void stop(std::shared_ptr<Session> session);

  void awaitConfirmations() { awaitsConfirmations_ = true; }

  /// The queue calls the film of this session complete.
  void confirm(std::shared_ptr<Session> session);

  /// For requests made from now on.
  void setTrust(const TrustedAuthorities& trust);

  /// Ends the pauses before further tries.
  void retryNow();

  /// For all that are under way too.
  void setRateLimit(std::uint64_t bytesPerSecond);

 private:
  using Clock = Transfer::Clock;
  using Work = std::function<void()>;

  /// A film in its place that still carries its mark.
  struct Finished {
    std::shared_ptr<Session> session;
    std::filesystem::path film;
    Clock::time_point since;
  };

  void post(Work work);
  void run();
  void doPosted();
  void workOn(Clock::time_point now);
  void settleEnded();
  std::chrono::milliseconds timeToWait(Clock::time_point now) const;
  std::chrono::milliseconds timeToForget(Clock::time_point now) const;
  void retryAll();
  void retryWhenDue(Clock::time_point now);
  void beginSession(const std::shared_ptr<Session>& session);
  void endSession(const std::shared_ptr<Session>& session);
  void confirmSession(const Session& session);
  bool isKnownToQueue(const Session& session) const;
  void forgetFinished(Clock::time_point now);
  void forgetPlaceOf(const DownloadRequest& request);
  void close();

  // Constant after construction.
  const Tuning tuning_;
  ReportDelivery& delivery_;

  std::atomic<bool> awaitsConfirmations_{false};

  // Guarded.
  mutable GuardMutex mutex_;
  std::deque<Work> posted_ KVPM_GUARDED_BY(mutex_);
  bool isClosing_ KVPM_GUARDED_BY(mutex_) = false;
  TrustedAuthorities trust_ KVPM_GUARDED_BY(mutex_);

  // The engine's thread alone.
  FetchLoop loop_;
  NetworkWatch network_;
  std::optional<Clock::time_point> retryAt_;  ///< after news of the network
  std::map<unsigned long long, std::unique_ptr<Transfer>> transfers_;
  std::deque<Finished> finished_;  ///< in the order of their completion

  WorkQueue files_;
  TransferContext context_;
  std::thread thread_;
};

}  // namespace playerx::transfers
