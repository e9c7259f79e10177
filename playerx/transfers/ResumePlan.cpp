#include "playerx/transfers/ResumePlan.h"

#include <algorithm>

#include "playerx/transfers/ContentRange.h"
#include "playerx/transfers/ResponseHead.h"

namespace playerx::transfers {
namespace {

Verdict broken(TransferFailure failure) { return {Step::kBreak, std::nullopt, failure}; }
Verdict askForWhole() { return {Step::kAskForWhole, std::nullopt, TransferFailure::kNone}; }

Verdict judgeWhole(const ResponseHead& head) {
  if (head.isEncoded() || head.hasImpossibleLength()) return broken(TransferFailure::kBadAnswer);
  if (head.isWebPage()) return broken(TransferFailure::kWebPage);
  return {Step::kReplace, head.bodyLength(), TransferFailure::kNone};
}

bool isTheRangeAskedFor(const ContentRange::Bytes& bytes, const RangeRequest& request,
                        const ResponseHead& head) {
  const auto length = head.bodyLength();
  return bytes.first == request.start && (!length || *length == bytes.last - bytes.first + 1);
}

bool isSameFile(const PartFacts& facts, const ContentRange& range, const ResponseHead& head) {
  if (facts.total && range.total && *facts.total != *range.total) return false;
  const auto total = range.total ? range.total : facts.total;
  if (total && (facts.size > *total || range.bytes->last >= *total)) return false;
  return !contradict(facts.validator, validatorOf(head));
}

Verdict judgePart(const RangeRequest& request, const PartFacts& facts, const ResponseHead& head) {
  if (!request.isRanged() || head.isEncoded()) return broken(TransferFailure::kBadAnswer);
  const auto range = parseContentRange(head.contentRange());
  if (!range || !range->bytes || !isTheRangeAskedFor(*range->bytes, request, head) ||
      !isSameFile(facts, *range, head)) {
    return askForWhole();
  }
  return {Step::kAppend, range->total ? range->total : facts.total, TransferFailure::kNone};
}

Verdict judgeNoSuchRange(const RangeRequest& request, const PartFacts& facts,
                         const ResponseHead& head) {
  if (!request.isRanged()) return broken(failureOfStatus(head.status()));
  const auto range = parseContentRange(head.contentRange());
  const bool everythingThere = range && !range->bytes && range->total == facts.size &&
                               facts.total == facts.size &&
                               !contradict(facts.validator, validatorOf(head));
  if (!everythingThere) return askForWhole();
  return {Step::kEverythingThere, facts.size, TransferFailure::kNone};
}

}  // namespace

RangeRequest planRequest(const PartFacts& facts, std::uint64_t largestOverlap) {
  if (facts.size == 0) return {};
  const std::uint64_t overlap = std::min(largestOverlap, facts.size / 2 + facts.size % 2);
  return {facts.size - overlap, overlap, strongText(facts.validator)};
}

Verdict judgeResponse(const RangeRequest& request, const PartFacts& facts,
                      const ResponseHead& head) {
  switch (head.status()) {
    case 200:
    case 203:
      return judgeWhole(head);
    case 206:
      return judgePart(request, facts, head);
    case 416:
      return judgeNoSuchRange(request, facts, head);
    case 429:
    case 503:
      return {Step::kTryLater, std::nullopt, failureOfStatus(head.status())};
    default:
      const bool isStatus = head.status() >= 100 && head.status() <= 599;
      return broken(isStatus ? failureOfStatus(head.status()) : TransferFailure::kBadAnswer);
  }
}

}  // namespace playerx::transfers
