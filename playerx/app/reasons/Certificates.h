#pragma once

#include <string>

#include "playerx/app/reasons/Reason.h"

namespace playerx::reasons {

/// What is wrong with the certificate of `host`, by libcurl's words. Where those name the host that
/// was asked, after a redirect another than that of the address, that one is named.
Explanation explainCertificate(const std::string& words, const std::string& host);

}  // namespace playerx::reasons
