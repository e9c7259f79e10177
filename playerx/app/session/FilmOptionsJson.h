#pragma once

#include <nlohmann/json.hpp>
#include <optional>

#include "playerx/transfers/TransferSettings.h"

namespace playerx::session {

/// The options that are set, as docs/queue-protocol.md names them.
nlohmann::ordered_json jsonOf(const FilmOptions& options);

/// Nullopt when a member has another type.
std::optional<FilmOptions> filmOptionsOf(const nlohmann::ordered_json& object);

}  // namespace playerx::session
