#pragma once

#include <string>

#include "playerx/app/reasons/Reason.h"

namespace playerx::reasons {

/// The proxy that the environment names for an address, as host and port without user and password;
/// empty without one.
std::string proxyOf(const std::string& address);

/// The proxy on the way to `address` wants a user name and password.
Explanation explainProxyLogin(const std::string& address);

}  // namespace playerx::reasons
