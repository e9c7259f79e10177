#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "playerx/transfers/Part.h"
#include "playerx/transfers/ResponseHead.h"
#include "playerx/transfers/ResumePlan.h"
#include "playerx/transfers/RetryPlan.h"

namespace playerx::transfers {

/// How one request for a partial ended.
struct AttemptEnd {
  enum class Kind {
    kComplete,     ///< every byte is there
    kContinue,     ///< a proper part of the rest has come; ask for what is missing
    kInterrupted,  ///< `failure` came in between
    kAskForWhole,  ///< what came does not fit what is there
    kTryLater,     ///< the server is busy: `failure`, `retryAfter`
    kBroken,       ///< `failure`; asking again would not help
  };
  Kind kind = Kind::kBroken;
  TransferFailure failure = TransferFailure::kNone;
  std::string detail;
  std::optional<Milliseconds> retryAfter;
};

/// Writes what one request yields to a partial: judges the answer's head, compares the overlap with
/// the bytes there, appends what follows.
///
/// Used by one thread. Knows nothing of where the bytes come from; they may come in any pieces.
class Attempt {
 public:
  /// `part` outlives it; `request` was planned for it.
  Attempt(Part& part, RangeRequest request);

  /// Takes one raw header line; false when no more are wanted.
  bool headerLine(std::string_view line);

  /// Takes a piece of the body; false when no more is wanted.
  bool body(const char* data, std::size_t length);

  /// Writes what is in memory to the file; false when no more is wanted.
  bool flush();

  /// The request is over: `transport` says whether it came to its proper end (kNone).
  AttemptEnd finish(TransferFailure transport, const std::string& detail);

  /// The partial, as it is, belongs to the file that the server sends.
  bool isProven() const;

  /// Bytes that were there were replaced by those of another version.
  bool isAnotherVersion() const { return isAnotherVersion_; }

  /// Bytes of the whole file; nullopt when not known, or not yet.
  std::optional<std::uint64_t> total() const { return total_; }

 private:
  enum class Stage { kHead, kOverlap, kRest, kOver };

  void judge();
  void begin(const Verdict& verdict);
  int prepare(const Verdict& verdict);
  bool compare(const char* data, std::size_t length);
  bool append(const char* data, std::size_t length);
  bool end(AttemptEnd::Kind kind, TransferFailure failure = TransferFailure::kNone,
           std::string detail = {});
  bool failed(int error);
  AttemptEnd endOfBody(TransferFailure transport, const std::string& detail);

  Part& part_;
  const RangeRequest request_;
  const std::uint64_t sizeBefore_;
  ResponseHead head_;
  Stage stage_ = Stage::kHead;
  std::optional<std::uint64_t> total_;  ///< once the answer is judged
  std::uint64_t compared_ = 0;          ///< bytes of the overlap
  bool isAnotherVersion_ = false;
  std::vector<char> kept_;  ///< the overlap as it is in the partial
  AttemptEnd end_;          ///< once `stage_` is kOver
};

}  // namespace playerx::transfers
