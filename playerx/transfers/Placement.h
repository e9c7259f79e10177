#pragma once

#include <atomic>
#include <filesystem>
#include <string>

#include "playerx/transfers/Part.h"
#include "playerx/transfers/Session.h"
#include "playerx/transfers/TransferFailure.h"

namespace playerx::transfers {

/// How the placing of a film ended.
struct Placed {
  enum class Kind { kDone, kGivenUp, kFailed };
  Kind kind = Kind::kFailed;
  std::filesystem::path film;  ///< for kDone: where it is
  TransferFailure failure = TransferFailure::kNone;
  std::string detail;
};

/// Moves a whole film, and its rights data beside it, to the place that `wish` names, or to a
/// variant of the name when that is taken. `film` is where an earlier session has put it already;
/// empty while it is still the partial. Its bytes are on the disk, and the record of where it goes
/// is written, before it moves: whenever the process dies, the film is found again. Runs on the
/// files thread; `giveUp` may be set by another.
Placed placeFilm(Part& part, const std::filesystem::path& film, const Wish& wish,
                 const std::atomic<bool>& giveUp);

}  // namespace playerx::transfers
