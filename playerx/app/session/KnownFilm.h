#pragma once

#include <optional>
#include <string>
#include <vector>

#include "playerx/app/model/ItemState.h"
#include "playerx/app/model/QueueTracker.h"

namespace playerx::session {

/// The one form in which every spelling of an address is remembered; empty for what is no address.
std::string formOf(const std::string& address);

/// The item of a queue that was added for this address: of several the one that has come farthest.
/// Nullopt for an address that is not there, and for what is not an address.
std::optional<model::ItemState> findKnownFilm(const std::vector<model::ItemState>& queue,
                                              const std::string& address);
std::optional<model::ItemState> findKnownFilm(const model::QueueTracker& queue,
                                              const std::string& address);

/// Where the file of a complete film is: at its path, or in the present media folder. Empty when it
/// is at neither. Looks at the disk.
std::string findFilm(const model::ItemState& film, const std::string& mediaFolder);

}  // namespace playerx::session
