#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "playerx/settings/TrustedAuthorities.h"
#include "playerx/transfers/Attempt.h"
#include "playerx/transfers/ChecksumRequest.h"
#include "playerx/transfers/Fetch.h"
#include "playerx/transfers/FetchLoop.h"
#include "playerx/transfers/ReportDelivery.h"
#include "playerx/transfers/RequestClock.h"
#include "playerx/transfers/RetryPlan.h"
#include "playerx/transfers/Session.h"
#include "playerx/transfers/SessionFiles.h"
#include "playerx/transfers/SessionReports.h"
#include "playerx/transfers/Tuning.h"
#include "playerx/transfers/WorkQueue.h"

namespace playerx::transfers {

/// What a transfer works with. Owned by the engine, which outlives its transfers.
struct TransferContext {
  const Tuning& tuning;
  ReportDelivery& delivery;
  WorkQueue& files;
  FetchLoop& loop;
  SessionFiles::OnEngine onEngine;
  std::function<TrustedAuthorities()> trust;  ///< as they are now
};

/// One session at work: asks for what its partial lacks as often as it takes, has the film placed,
/// and reports. Lives on the engine's thread.
class Transfer : private FetchSink {
 public:
  using Clock = RequestClock::Clock;

  enum class State { kRunning, kComplete, kBroken };

  Transfer(std::shared_ptr<Session> session, TransferContext& context);

  const std::shared_ptr<Session>& session() const { return session_; }
  State state() const { return state_; }
  /// Where a complete film lies.
  const std::filesystem::path& film() const { return files_->placed().film; }

  void begin();

  /// To be called after the loop has performed: writes, reports, ends a silent request or a pause.
  void work(Clock::time_point now);

  /// When `work` has to be called even if nothing happens; nullopt when it need not be.
  std::optional<Clock::time_point> deadline() const;

  /// Makes the next try at once that waits for its time, and that of a request to which nothing
  /// comes. A time that the server has named is kept.
  void retryNow(Clock::time_point now);

  /// Releases everything at once; nothing more is reported.
  void stop();

 private:
  enum class Phase { kOpening, kRequesting, kPausing, kPlacing, kOver };

  bool onHeaderLine(std::string_view line) override;
  bool onBody(const char* data, std::size_t length) override;
  void onOver(const FetchOutcome& outcome) override;

  void onOpened();
  void onPlaced();
  void request();
  void reportProgress();
  bool isSaveDue(Clock::time_point now) const;
  bool save();
  void endAttempt(TransferFailure transport, const std::string& detail);
  void follow(const AttemptEnd& end);
  bool mayStartOver();
  void pauseOrBreak(const AttemptEnd& end);
  void askForChecksum();
  void place();
  void breakOff(TransferFailure failure, const std::string& detail);
  void release();
  Part& part() const { return files_->part(); }

  const std::shared_ptr<Session> session_;
  TransferContext& context_;
  const std::shared_ptr<SessionFiles> files_;
  State state_ = State::kRunning;
  Phase phase_ = Phase::kOpening;

  std::unique_ptr<Fetch> fetch_;
  std::unique_ptr<Attempt> attempt_;
  std::unique_ptr<ChecksumRequest> checksumRequest_;
  std::string sha256_;  ///< that the film must have; empty: any, or not known yet
  SessionReports reports_;
  RequestClock clock_;
  RetryCounter retries_{0};
  unsigned restarts_ = 0;
  bool needsWhole_ = false;  ///< the next request asks for the whole film
  bool isContacted_ = false;
  bool isFirstRequest_ = true;
  bool isAskedToWait_ = false;  ///< by the server
  Clock::time_point wakeAt_;    ///< end of a pause
};

}  // namespace playerx::transfers
