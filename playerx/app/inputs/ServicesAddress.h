#pragma once

#include <string>

namespace playerx {

/// Address of the online services, as the options and the preferences say; empty for none. Main
/// thread.
std::string servicesAddress();

}  // namespace playerx
