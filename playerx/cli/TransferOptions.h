#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>

#include "playerx/app/session/QueueRequest.h"

namespace playerx::cli {

/// The options of a command that adds films which say how they are fetched.
void addTransferOptions(CLI::App& command, session::Request& request);

/// "--limit-rate", for commands that may set it.
void addRateLimit(CLI::App& command, session::Request& request);

/// Bytes per second: a number with an optional K, M or G behind it (of 1024, as curl and wget take
/// them); "none" or 0 for no limit. Throws `CLI::ValidationError` for anything else.
std::uint64_t rateOf(const std::string& text);

}  // namespace playerx::cli
