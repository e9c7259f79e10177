#pragma once

#include <curl/curl.h>

#include "playerx/settings/TrustedAuthorities.h"

namespace playerx {

/// Has a request trust these authorities and no others, for the server as for a proxy that is
/// spoken to over TLS. Without any named it is left with the system's.
void applyTrust(CURL* curl, const TrustedAuthorities& authorities);

}  // namespace playerx
