// Input: the head of a server's response, line by line; several heads may follow each other.
#include <algorithm>

#include "playerx/transfers/ResponseHead.h"
#include "playerx/transfers/ResumePlan.h"
#include "tests/fuzz/Fuzz.h"

namespace {

using namespace playerx::transfers;

ResponseHead headOf(const std::string& text) {
  ResponseHead head;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size() - 1) + 1;
    head.addLine(std::string_view(text).substr(start, end - start));
    start = end;
  }
  return head;
}

/// What may stand in a later request.
void requireHarmless(const std::string& value) {
  const auto isPrintable = [](char c) { return c >= ' ' && c < 0x7F; };
  fuzz::require(std::all_of(value.begin(), value.end(), isPrintable), "validators are one line");
}

/// Whatever the head says: what is there is appended to only where the request left off.
void checkVerdict(const ResponseHead& head, const PartFacts& known) {
  const RangeRequest rest = planRequest(known, 100);
  const Verdict verdict = judgeResponse(rest, known, head);
  if (verdict.step == Step::kAppend) {
    fuzz::require(head.status() == 206, "only a part is appended");
    fuzz::require(head.contentRange().find(std::to_string(known.size - 100)) != std::string::npos,
                  "from where it was asked");
    fuzz::require(verdict.total == 1000U, "the film keeps its size");
  }
  if (verdict.step == Step::kEverythingThere) {
    fuzz::require(head.status() == 416, "no more than there is");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ResponseHead head = headOf(fuzz::textOf(data, size));
  fuzz::require(head.size() == size, "every byte counts");
  fuzz::require(head.status() >= 0 && head.status() <= 999, "a status has three digits");
  const Validator validator = validatorOf(head);
  requireHarmless(validator.etag);
  requireHarmless(validator.lastModified);
  head.bodyLength();
  head.isWebPage();
  head.isEncoded();
  checkVerdict(head, {400, 1000, Validator{"\"a\"", "", false}});
  checkVerdict(head, {1000, 1000, Validator{"", "Sun, 06 Nov 1994 08:49:37 GMT", true}});
  return 0;
}
