#pragma once

#include <stop_token>
#include <string>

#include "playerx/app/reasons/ProbeReason.h"
#include "playerx/settings/TrustedAuthorities.h"

namespace playerx {

/// Asks the server behind `url` (UTF-8) for the head of the film, as a download would: redirects
/// followed up to ten times, certificates checked, proxy from the environment. Blocks for at most
/// 20 seconds, less when `stop` is requested.
ProbeResult probeServer(const std::string& url, const TrustedAuthorities& authorities,
                        std::stop_token stop);

}  // namespace playerx
