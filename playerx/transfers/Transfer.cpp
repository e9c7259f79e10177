#include "playerx/transfers/Transfer.h"

#include <algorithm>
#include <random>
#include <system_error>
#include <utility>

#include "playerx/transfers/Checksum.h"
#include "playerx/transfers/SystemError.h"

namespace playerx::transfers {
namespace {

std::chrono::milliseconds stallTime(const FilmOptions& options, const Tuning& tuning) {
  return options.timeout.count() > 0 ? options.timeout : tuning.stall;
}

FetchSpec specOf(const std::string& url, const FilmOptions& options,
                 const TransferContext& context) {
  const bool hasTimeout = options.timeout.count() > 0;
  return {.url = url,
          .trust = context.trust(),
          .options = options,
          .connectTimeout = hasTimeout ? options.timeout : context.tuning.connectTimeout};
}

RetryRules retryRules(const FilmOptions& options, const Tuning& tuning) {
  RetryRules rules = tuning.retry;
  if (options.tries > 0) rules.retries = options.tries - 1;
  return rules;
}

double randomJitter() {
  static thread_local std::minstd_rand engine{std::random_device()()};
  return std::uniform_real_distribution<double>(0.0, 1.0)(engine);
}

}  // namespace

Transfer::Transfer(std::shared_ptr<Session> session, TransferContext& context)
    : session_(std::move(session)),
      context_(context),
      files_(std::make_shared<SessionFiles>(session_, context.files, context.onEngine,
                                            context.tuning.syncEvery)),
      sha256_(session_->request.options.sha256),
      reports_(session_, context.delivery) {}

void Transfer::begin() {
  files_->open([this] { onOpened(); });
}

void Transfer::onOpened() {
  // What was stopped before it was opened has neither partial nor failure; the stop is on its way.
  if (session_->stopped) return;
  const Opened& opened = files_->opened();
  if (!opened.film.empty()) {
    std::error_code ignored;
    reports_.whole(std::filesystem::file_size(opened.film, ignored));
    return place();
  }
  if (!opened.part) return breakOff(opened.failure, opened.detail);
  const std::uint64_t size = part().file().size();
  // Before the path: who sees that takes the bytes for those that were there.
  reports_.found(size);
  session_->log.arrivesIn(part().paths().bytes());
  if (part().isWhole()) {
    reports_.whole(size);
    return place();
  }
  retries_ = RetryCounter(size);
  request();
}

void Transfer::request() {
  phase_ = Phase::kRequesting;
  session_->log.enter(TransferPhase::kArriving);
  const RangeRequest range =
      needsWhole_ ? RangeRequest() : planRequest(part().facts(), context_.tuning.overlap);
  attempt_ = std::make_unique<Attempt>(part(), range);
  const DownloadRequest& wanted = session_->request;
  FetchSpec spec = specOf(wanted.address.fetched, wanted.options, context_);
  spec.range = range;
  spec.freshConnection = !isFirstRequest_;
  FetchSink& sink = *this;
  fetch_ = std::make_unique<Fetch>(spec, sink);
  needsWhole_ = false;
  isFirstRequest_ = false;
  clock_ = RequestClock(Clock::now(), context_.tuning.saveAfter);
  context_.loop.add(*fetch_, sink);
}

bool Transfer::onHeaderLine(std::string_view line) {
  clock_.touch();
  isContacted_ = true;
  reports_.header(line);
  return attempt_->headerLine(line);
}

bool Transfer::onBody(const char* data, std::size_t length) {
  clock_.touch();
  return attempt_->body(data, length);
}

void Transfer::onOver(const FetchOutcome& outcome) { endAttempt(outcome.failure, outcome.detail); }

void Transfer::work(Clock::time_point now) {
  // A transfer that the rate limit holds back has not stalled.
  clock_.settle(now, fetch_ && fetch_->isKeptBack());
  if (phase_ == Phase::kRequesting) {
    if (!attempt_->flush()) return endAttempt(TransferFailure::kNone, {});
    reportProgress();
    if (isSaveDue(now) && !save()) return;
    files_->syncIfDue();
    if (now >= clock_.silentUntil(stallTime(session_->request.options, context_.tuning))) {
      endAttempt(TransferFailure::kStalled, "no byte came");
    }
  } else if (phase_ == Phase::kPausing && now >= wakeAt_) {
    request();
  }
}

void Transfer::retryNow(Clock::time_point now) {
  if (phase_ == Phase::kRequesting && now >= clock_.silentUntil(context_.tuning.lostAfter)) {
    endAttempt(TransferFailure::kStalled, "no byte came");
  }
  if (phase_ != Phase::kPausing || isAskedToWait_) return;
  // The network may come and go more often than there are tries.
  retries_.forgive();
  wakeAt_ = now;
}

std::optional<Transfer::Clock::time_point> Transfer::deadline() const {
  if (phase_ == Phase::kPausing) return wakeAt_;
  if (phase_ != Phase::kRequesting) return std::nullopt;
  const Clock::time_point stalledAt =
      clock_.silentUntil(stallTime(session_->request.options, context_.tuning));
  return isSaveDue(clock_.saveAt()) ? std::min(clock_.saveAt(), stalledAt) : stalledAt;
}

// A later session can only go on from what is saved.
bool Transfer::isSaveDue(Clock::time_point now) const {
  return now >= clock_.saveAt() && attempt_->isProven() && !part().isSaved();
}

bool Transfer::save() {
  const int error = part().save();
  if (error == 0) return true;
  breakOff(failureOfError(error, TransferFailure::kTempFolder),
           describeError(part().paths().state(), error));
  return false;
}

void Transfer::reportProgress() {
  if (!attempt_->isProven()) return;
  const std::uint64_t size = part().file().size();
  retries_.arrived(size);
  reports_.arrived(size, attempt_->total());
}

void Transfer::endAttempt(TransferFailure transport, const std::string& detail) {
  const AttemptEnd end = attempt_->finish(transport, detail);
  context_.loop.remove(*fetch_);
  fetch_.reset();
  reportProgress();
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
      needsWhole_ = true;
      return mayStartOver() ? request() : void();
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
  if (++restarts_ <= context_.tuning.mostRestarts) return true;
  breakOff(TransferFailure::kKeepsChanging, "the answers do not fit together");
  return false;
}

void Transfer::pauseOrBreak(const AttemptEnd& end) {
  const RetryRules rules = retryRules(session_->request.options, context_.tuning);
  const std::optional<unsigned> number = retries_.failed(rules);
  if (!number) return breakOff(end.failure, end.detail);
  if (part().file().size() > 0 && !save()) return;
  const double jitter = context_.tuning.jitter ? context_.tuning.jitter() : randomJitter();
  wakeAt_ = Clock::now() + pauseBeforeRetry(rules, *number, jitter, end.retryAfter);
  isAskedToWait_ = end.retryAfter.has_value();
  phase_ = Phase::kPausing;
  session_->log.enter(TransferPhase::kWaiting);
  session_->log.failedAttempt(end.failure, end.detail, *number);
}

void Transfer::place() {
  phase_ = Phase::kPlacing;
  session_->log.wentWell();
  session_->log.enter(TransferPhase::kPlacing);
  const bool isSumWanted = session_->request.options.hasChecksumFile && sha256_.empty();
  if (isSumWanted && files_->opened().part) return askForChecksum();
  files_->place(sha256_, [this] { onPlaced(); });
}

void Transfer::askForChecksum() {
  const DownloadRequest& wanted = session_->request;
  const auto then = [this](const auto& sum, const std::string& problem) {
    checksumRequest_.reset();
    if (!sum) return breakOff(TransferFailure::kNoChecksum, problem);
    sha256_ = *sum;
    place();
  };
  checksumRequest_ = std::make_unique<ChecksumRequest>(
      specOf(checksumAddress(wanted.address.fetched), wanted.options, context_),
      std::filesystem::path(wanted.address.place).filename(), context_.loop, then);
}

void Transfer::onPlaced() {
  const Placed& placed = files_->placed();
  if (placed.kind == Placed::Kind::kFailed) return breakOff(placed.failure, placed.detail);
  if (placed.kind == Placed::Kind::kCancelled) return;
  phase_ = Phase::kOver;
  state_ = State::kComplete;
  reports_.complete(placed.film);
}

void Transfer::breakOff(TransferFailure failure, const std::string& detail) {
  release();
  state_ = State::kBroken;
  reports_.broke(failure, detail);
}

void Transfer::stop() {
  if (phase_ == Phase::kOver) return;
  release();
  session_->log.enter(TransferPhase::kStopped);
}

void Transfer::release() {
  phase_ = Phase::kOver;
  if (fetch_) context_.loop.remove(*fetch_);
  fetch_.reset();
  attempt_.reset();
  checksumRequest_.reset();
  files_->release();
}

}  // namespace playerx::transfers
