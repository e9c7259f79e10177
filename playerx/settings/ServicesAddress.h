#pragma once

#include <string>

namespace playerx {

/// Address of the online services (UTF-8), as the options and the preferences say; empty without
/// any. On the host's thread only.
std::string servicesAddress();

}  // namespace playerx
