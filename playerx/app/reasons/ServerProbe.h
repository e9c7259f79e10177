#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>

#include "playerx/app/reasons/Reason.h"
#include "playerx/settings/TrustedAuthorities.h"
#include "playerx/transfers/CurlFailure.h"

namespace playerx::reasons {

/// What a look at a server found.
struct ProbeResult {
  std::string address;       ///< the one asked for
  CurlEnd end;               ///< how the request ended
  std::string words;         ///< libcurl's own on a failure
  long status = 0;           ///< HTTP status of the last answer; 0 when there was none
  std::int64_t length = -1;  ///< announced bytes; -1 when none were announced
  std::string type{};        ///< announced media type ("text/html; charset=utf-8"); may be empty
  std::string last{};        ///< web address asked last, after redirects; may be empty
};

/// Looks at the server behind an address (UTF-8). Blocks for the network, less long when a stop is
/// requested. Any thread.
using Probe = std::function<ProbeResult(const std::string& address, std::stop_token stop)>;

/// A probe that asks for the head of the film as a download would: redirects followed up to ten
/// times, certificates checked against `authorities`, proxy from the environment, 20 seconds at
/// most.
Probe serverProbe(TrustedAuthorities authorities);

/// The reason that a probe shows, as a transfer that ended so would give it; nullopt when the
/// server answered as it should.
std::optional<Explanation> explainProbe(const ProbeResult& probe);

}  // namespace playerx::reasons
