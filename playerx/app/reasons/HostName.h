#pragma once

#include <string>

namespace playerx {

/// The host of an address; the whole text when it cannot be parsed.
std::string hostOf(const std::string& url);

}  // namespace playerx
