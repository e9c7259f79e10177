#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "playerx/transfers/TransferFailure.h"
#include "playerx/transfers/Validator.h"

namespace playerx::transfers {

class ResponseHead;

/// What is known of a partial file when the rest is requested. A record.
struct PartFacts {
  std::uint64_t size = 0;              ///< bytes there
  std::optional<std::uint64_t> total;  ///< bytes of the whole file, when known
  Validator validator;                 ///< of the version that the bytes belong to
};

/// The part of a file that is asked for. The last `overlap` bytes before the end of the partial are
/// asked for once more: they prove that the rest belongs to the same file.
struct RangeRequest {
  std::uint64_t start = 0;
  std::uint64_t overlap = 0;  ///< 0: the whole file is asked for
  std::string ifRange;        ///< strong validator; empty: the field is not sent

  bool isRanged() const { return overlap > 0; }
  bool operator==(const RangeRequest&) const = default;
};

/// The request that continues a partial, with an overlap of `largestOverlap` bytes or half of what
/// is there.
RangeRequest planRequest(const PartFacts& facts, std::uint64_t largestOverlap);

/// What to do with a response.
enum class Step {
  kAppend,           ///< the body begins with the overlap; what follows continues the partial
  kReplace,          ///< the body is the whole file: it takes the place of what is there
  kAskForWhole,      ///< does not help: ask again, for the whole file
  kEverythingThere,  ///< the partial is the whole file
  kTryLater,         ///< the server is busy
  kBreak,            ///< asking again would not help
};

struct Verdict {
  Step step = Step::kBreak;
  std::optional<std::uint64_t> total;                ///< for kAppend and kReplace
  TransferFailure failure = TransferFailure::kNone;  ///< for kTryLater and kBreak
};

/// Judges the response to `request`, made for the partial that `facts` describe. Bytes of two
/// versions never come together: whatever differs between facts and answer, total, validator, or
/// where the range begins, ends in kAskForWhole.
Verdict judgeResponse(const RangeRequest& request, const PartFacts& facts,
                      const ResponseHead& head);

}  // namespace playerx::transfers
