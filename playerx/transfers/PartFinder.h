#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "playerx/transfers/Part.h"
#include "playerx/transfers/Session.h"
#include "playerx/transfers/TransferFailure.h"

namespace playerx::transfers {

/// What a session begins with.
struct Opened {
  std::unique_ptr<Part> part;  ///< claimed
  std::filesystem::path film;  ///< instead: an earlier session has placed the film here, unnoticed
  TransferFailure failure = TransferFailure::kNone;  ///< when there is neither
  std::string detail;
};

/// Finds what earlier sessions have left of the requested film, or begins a new partial; claims it.
///
/// A partial is known by the address it came from, never by name or size; a rights-managed film by
/// its place alone, since every authorisation gives it another address. A film whose completion was
/// lost with its process is looked for under the requested name and those taken before it. May take
/// the disk's time.
Opened openPart(const DownloadRequest& request);

}  // namespace playerx::transfers
