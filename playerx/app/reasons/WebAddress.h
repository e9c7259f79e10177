#pragma once

#include <string>

namespace playerx {

/// Why an address that begins with http:// or https:// cannot be used, one sentence; empty when it
/// begins otherwise or nothing is found.
std::string faultOfAddress(const std::string& address);

/// Whether the port that the address names is none; one that is not named is fine.
bool hasBadPort(const std::string& address);

}  // namespace playerx
