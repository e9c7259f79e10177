#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace kvsc {

/// The TCP port that `port` stands for: digits from 1 to 65535, or a service name such as "https".
/// Nothing for anything else. Any thread.
std::optional<std::uint16_t> servicePort(const std::string& port);

}  // namespace kvsc
