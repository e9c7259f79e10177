#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace kvsc {

/// The TCP port that `port` stands for: the number from 1 to 65535 that it begins with, or else a
/// service name such as "https". Nothing for anything else. Any thread.
std::optional<std::uint16_t> servicePort(const std::string& port);

}  // namespace kvsc
