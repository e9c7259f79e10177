#include "playerx/transfers/Transfer.h"

#include <random>
#include <utility>

namespace playerx::transfers {
namespace {

double randomJitter() {
  static thread_local std::minstd_rand engine{std::random_device()()};
  return std::uniform_real_distribution<double>(0.0, 1.0)(engine);
}

}  // namespace

Transfer::Transfer(std::shared_ptr<Session> session, Workshop& workshop)
    : session_(std::move(session)), workshop_(workshop), slot_(std::make_shared<Slot>()) {}

// The slot outlives the transfer as long as the files thread has work for it; only `then` needs
// the transfer itself.
void Transfer::onFilesThread(std::function<void(Slot&, Session&)> job, void (Transfer::*then)()) {
  workshop_.files.post([job = std::move(job), then, slot = slot_, session = session_,
                        self = weak_from_this(), onEngine = workshop_.onEngine] {
    job(*slot, *session);
    onEngine([then, self] {
      if (const auto transfer = self.lock()) (transfer.get()->*then)();
    });
  });
}

void Transfer::begin() {
  const auto open = [](Slot& slot, Session& session) {
    if (!session.stopped) slot.opened = openPart(session.wish);
  };
  onFilesThread(open, &Transfer::onOpened);
}

void Transfer::onOpened() {
  if (phase_ != Phase::kOpening) return;
  const Opened& opened = slot_->opened;
  if (!opened.part) return breakOff(opened.failure, opened.detail);
  paths_ = opened.part->paths();
  if (opened.kind != Opened::Kind::kArriving) {
    const std::uint64_t size = opened.part->state().size;
    session_->log.arrived(size, size, Clock::now());
    reportBegan();
    workshop_.delivery.percent(session_, 100);
    return place();
  }
  const std::uint64_t size = part().file().size();
  if (size == 0) percent_ = PercentReporter(0);
  retries_ = RetryCounter(size);
  synced_ = part().state().durable;
  request();
}

RangeRequest Transfer::nextRange() const {
  if (wholeWanted_) return {};
  return planRequest(slot_->opened.part->facts(), workshop_.tuning.overlap);
}

FetchSpec Transfer::nextSpec(const RangeRequest& range) const {
  const Wish& wish = session_->wish;
  return {.url = wish.address.fetched,
          .username = wish.username,
          .password = wish.password,
          .range = range,
          .trust = workshop_.trust(),
          .connectTimeout = workshop_.tuning.connectTimeout,
          .freshConnection = !isFirstRequest_};
}

void Transfer::request() {
  phase_ = Phase::kRequesting;
  session_->log.enter(TransferPhase::kArriving);
  const RangeRequest range = nextRange();
  attempt_ = std::make_unique<Attempt>(part(), range);
  FetchSink& sink = *this;
  fetch_ = std::make_unique<Fetch>(nextSpec(range), sink);
  wholeWanted_ = false;
  isFirstRequest_ = false;
  isTouched_ = false;
  lastTouch_ = Clock::now();
  workshop_.loop.add(*fetch_, sink);
}

bool Transfer::onHeaderLine(std::string_view line) {
  isTouched_ = true;
  isContacted_ = true;
  workshop_.delivery.header(session_, std::string(line));
  return attempt_->headerLine(line);
}

bool Transfer::onBody(const char* data, std::size_t length) {
  isTouched_ = true;
  return attempt_->body(data, length);
}

void Transfer::onOver(const FetchOutcome& outcome) { endAttempt(outcome.failure, outcome.detail); }

void Transfer::work(Clock::time_point now) {
  if (std::exchange(isTouched_, false)) lastTouch_ = now;
  if (phase_ == Phase::kRequesting) {
    if (!attempt_->flush()) return endAttempt(TransferFailure::kNone, {});
    reportProgress(now);
    syncNowAndThen();
    if (now - lastTouch_ >= workshop_.tuning.stall) {
      endAttempt(TransferFailure::kStalled, "no byte came");
    }
  } else if (phase_ == Phase::kPausing && now >= wakeAt_) {
    request();
  }
}

std::optional<Transfer::Clock::time_point> Transfer::deadline() const {
  if (phase_ == Phase::kPausing) return wakeAt_;
  if (phase_ == Phase::kRequesting) return lastTouch_ + workshop_.tuning.stall;
  return std::nullopt;
}

void Transfer::reportBegan() {
  if (!std::exchange(hasBegun_, true)) workshop_.delivery.began(session_);
}

void Transfer::reportProgress(Clock::time_point now) {
  if (!attempt_->isProven()) return;
  const std::uint64_t size = part().file().size();
  const std::optional<std::uint64_t> total = attempt_->total();
  retries_.arrived(size);
  session_->log.arrived(size, total, now);
  reportBegan();
  if (const auto percent = percent_.next(size, total)) {
    workshop_.delivery.percent(session_, *percent);
  }
}

// Beside the transfer, so that little is left to do when the last byte has come.
void Transfer::syncNowAndThen() {
  const std::uint64_t size = part().file().size();
  if (size < synced_) synced_ = 0;
  if (isSyncing_ || size - synced_ < workshop_.tuning.syncEvery) return;
  isSyncing_ = true;
  synced_ = size;
  const auto sync = [mark = part().mark()](Slot& slot, Session&) {
    // A disk that fails shows it when the film is placed.
    static_cast<void>(slot.opened.part->makeDurable(mark));
  };
  onFilesThread(sync, &Transfer::onSynced);
}

void Transfer::endAttempt(TransferFailure transport, const std::string& detail) {
  const AttemptEnd end = attempt_->finish(transport, detail);
  workshop_.loop.remove(*fetch_);
  fetch_.reset();
  reportProgress(Clock::now());
  const bool isAnotherVersion = attempt_->isAnotherVersion();
  attempt_.reset();
  if (isAnotherVersion && end.kind != AttemptEnd::Kind::kComplete && !mayStartOver()) return;
  follow(end);
}

void Transfer::follow(const AttemptEnd& end) {
  switch (end.kind) {
    case AttemptEnd::Kind::kComplete:
      return place();
    case AttemptEnd::Kind::kContinue:
      return request();
    case AttemptEnd::Kind::kAskForWhole:
      return askForWhole();
    case AttemptEnd::Kind::kInterrupted:
      if (!isWorthRetrying(end.failure, isContacted_)) return breakOff(end.failure, end.detail);
      return pauseOrBreak(end);
    case AttemptEnd::Kind::kTryLater:
      return pauseOrBreak(end);
    case AttemptEnd::Kind::kBroken:
      return breakOff(end.failure, end.detail);
  }
}

/// Counts one start from the first byte. False when that was one too many, and the session is over.
bool Transfer::mayStartOver() {
  if (++restarts_ <= workshop_.tuning.mostRestarts) return true;
  breakOff(TransferFailure::kKeepsChanging, "the answers do not fit together");
  return false;
}

void Transfer::askForWhole() {
  if (!mayStartOver()) return;
  wholeWanted_ = true;
  request();
}

void Transfer::pauseOrBreak(const AttemptEnd& end) {
  const RetryRules& rules = workshop_.tuning.retry;
  const std::optional<unsigned> number = retries_.failed(rules);
  if (!number) return breakOff(end.failure, end.detail);
  const double jitter = workshop_.tuning.jitter ? workshop_.tuning.jitter() : randomJitter();
  wakeAt_ = Clock::now() + pauseBeforeRetry(rules, *number, jitter, end.retryAfter);
  phase_ = Phase::kPausing;
  session_->log.enter(TransferPhase::kWaiting);
  session_->log.failedAttempt(end.failure, end.detail, *number);
}

void Transfer::place() {
  phase_ = Phase::kPlacing;
  session_->log.wentWell();
  session_->log.enter(TransferPhase::kPlacing);
  const auto placing = [](Slot& slot, Session& session) {
    slot.placed = placeFilm(*slot.opened.part, slot.opened.film, session.wish, session.stopped);
    // Whoever asks for the same film next finds it, not its partial.
    if (slot.placed.kind != Placed::Kind::kGivenUp) slot.opened.part.reset();
  };
  onFilesThread(placing, &Transfer::onPlaced);
}

void Transfer::onPlaced() {
  if (phase_ != Phase::kPlacing) return;
  const Placed& placed = slot_->placed;
  if (placed.kind == Placed::Kind::kFailed) return breakOff(placed.failure, placed.detail);
  if (placed.kind == Placed::Kind::kGivenUp) return;
  phase_ = Phase::kOver;
  state_ = State::kComplete;
  session_->log.completed(placed.film);
  workshop_.delivery.complete(session_);
}

void Transfer::breakOff(TransferFailure failure, const std::string& detail) {
  letGo();
  state_ = State::kBroken;
  session_->log.broke(failure, detail);
  workshop_.delivery.broke(session_, static_cast<int>(failure));
}

void Transfer::stop() {
  if (phase_ == Phase::kOver) return;
  letGo();
  session_->log.enter(TransferPhase::kStopped);
}

void Transfer::letGo() {
  phase_ = Phase::kOver;
  if (fetch_) workshop_.loop.remove(*fetch_);
  fetch_.reset();
  attempt_.reset();
  workshop_.files.post([slot = slot_] { slot->opened.part.reset(); });
}

}  // namespace playerx::transfers
