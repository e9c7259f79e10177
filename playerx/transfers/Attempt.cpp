#include "playerx/transfers/Attempt.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <utility>

#include "playerx/transfers/SystemError.h"

namespace playerx::transfers {
namespace {

constexpr std::size_t kMostHeaderBytes = std::size_t{256} << 10U;

}  // namespace

Attempt::Attempt(Part& part, RangeRequest request)
    : part_(part), request_(std::move(request)), sizeBefore_(part.file().size()) {}

bool Attempt::headerLine(std::string_view line) {
  head_.addLine(line);
  if (head_.size() <= kMostHeaderBytes) return true;
  return end(AttemptEnd::Kind::kBroken, TransferFailure::kBadAnswer, "too many headers");
}

bool Attempt::body(const char* data, std::size_t length) {
  if (stage_ == Stage::kHead) judge();
  if (stage_ == Stage::kOverlap) {
    const std::size_t part = std::min<std::uint64_t>(length, request_.overlap - compared_);
    if (!compare(data, part)) return false;
    data += part;
    length -= part;
  }
  return stage_ == Stage::kRest ? append(data, length) : stage_ != Stage::kOver;
}

bool Attempt::flush() {
  if (stage_ != Stage::kRest) return true;
  const int error = part_.file().flush();
  return error == 0 || failed(error);
}

bool Attempt::isProven() const { return stage_ == Stage::kRest; }

void Attempt::judge() {
  const Verdict verdict = judgeResponse(request_, part_.facts(), head_);
  const std::string status = "status " + std::to_string(head_.status());
  switch (verdict.step) {
    case Step::kAppend:
    case Step::kReplace:
      return begin(verdict);
    case Step::kAskForWhole:
      end(AttemptEnd::Kind::kAskForWhole);
      return;
    case Step::kEverythingThere:
      total_ = verdict.total;
      stage_ = Stage::kRest;
      return;
    case Step::kTryLater:
      end(AttemptEnd::Kind::kTryLater, verdict.failure, status);
      end_.retryAfter = parseRetryAfter(head_.retryAfter(), std::time(nullptr));
      return;
    case Step::kBreak:
      end(AttemptEnd::Kind::kBroken, verdict.failure, status);
      return;
  }
}

void Attempt::begin(const Verdict& verdict) {
  const bool isReplaced = verdict.step == Step::kReplace;
  const bool differs = part_.facts().validator != validatorOf(head_);
  isAnotherVersion_ = isReplaced && differs && sizeBefore_ > 0;
  total_ = verdict.total;
  if (const int error = prepare(verdict); error != 0) {
    failed(error);
  } else if (isReplaced) {
    stage_ = Stage::kRest;
  } else {
    stage_ = Stage::kOverlap;
  }
}

// The state is written before the first byte of another version, and the space reserved.
int Attempt::prepare(const Verdict& verdict) {
  int error = 0;
  if (verdict.step == Step::kReplace) {
    error = part_.beginVersion(validatorOf(head_), verdict.total);
  } else {
    kept_.resize(request_.overlap);
    if (!part_.file().read(request_.start, kept_.data(), kept_.size())) return EIO;
    if (verdict.total && !part_.facts().total) error = part_.learnTotal(*verdict.total);
  }
  return error == 0 && verdict.total ? part_.file().reserve(*verdict.total) : error;
}

bool Attempt::compare(const char* data, std::size_t length) {
  if (std::memcmp(kept_.data() + compared_, data, length) != 0) {
    return end(AttemptEnd::Kind::kAskForWhole);
  }
  compared_ += length;
  if (compared_ == request_.overlap) {
    stage_ = Stage::kRest;
    kept_ = {};
  }
  return true;
}

bool Attempt::append(const char* data, std::size_t length) {
  if (length == 0) return true;
  if (total_ && length > *total_ - std::min(*total_, part_.file().size())) {
    return end(AttemptEnd::Kind::kAskForWhole);
  }
  const int error = part_.file().append(data, length);
  return error == 0 || failed(error);
}

bool Attempt::failed(int error) {
  return end(AttemptEnd::Kind::kBroken, failureOfError(error, TransferFailure::kWriteFailed),
             describeError(part_.paths().bytes(), error));
}

bool Attempt::end(AttemptEnd::Kind kind, TransferFailure failure, std::string detail) {
  stage_ = Stage::kOver;
  end_ = {kind, failure, std::move(detail), std::nullopt};
  return false;
}

AttemptEnd Attempt::finish(TransferFailure transport, const std::string& detail) {
  // An end within the head counts as a proper one to libcurl.
  if (stage_ == Stage::kHead && transport == TransferFailure::kNone && head_.isWhole()) judge();
  flush();
  if (stage_ == Stage::kOver) return end_;
  if (stage_ == Stage::kRest) return endOfBody(transport, detail);
  const bool isProper = transport == TransferFailure::kNone;
  return {AttemptEnd::Kind::kInterrupted, isProper ? TransferFailure::kDropped : transport, detail,
          std::nullopt};
}

AttemptEnd Attempt::endOfBody(TransferFailure transport, const std::string& detail) {
  const std::uint64_t size = part_.file().size();
  const bool isProper = transport == TransferFailure::kNone;
  if (!total_ && isProper) {
    total_ = size;
    if (const int error = part_.learnTotal(size); error != 0) failed(error);
    if (stage_ == Stage::kOver) return end_;
  }
  if (total_ == size) return {AttemptEnd::Kind::kComplete, {}, {}, {}};
  if (!isProper) return {AttemptEnd::Kind::kInterrupted, transport, detail, std::nullopt};
  const bool hasGrown = request_.isRanged() && size > sizeBefore_;
  if (hasGrown) return {AttemptEnd::Kind::kContinue, {}, {}, {}};
  return {AttemptEnd::Kind::kInterrupted, TransferFailure::kDropped, "short body", std::nullopt};
}

}  // namespace playerx::transfers
