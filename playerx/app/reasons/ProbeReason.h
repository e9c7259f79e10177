#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "playerx/app/reasons/FailureReason.h"
#include "playerx/transfers/CurlFailure.h"

namespace playerx {

/// What a second look at the server found.
struct ProbeResult {
  CurlEnd end;
  long status = 0;           ///< HTTP status of the last answer; 0 when there was none
  std::int64_t length = -1;  ///< announced bytes; -1 when none were announced
  std::string host;          ///< of the address asked
  std::string detail;        ///< libcurl's own words; may be empty
};

/// The reason that a second look at the server shows, as a transfer that ended so would give it;
/// none when the server answered as it should.
std::optional<FailureReason> reasonFromProbe(const ProbeResult& probe);

}  // namespace playerx
