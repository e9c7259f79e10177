#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

namespace playerx::model {

/// Bytes in units of 1000 with one decimal: "0 B", "999 B", "1.0 kB", "1.5 GB".
std::string formatBytes(std::uint64_t bytes);

/// Two different amounts, each as `formatBytes` has it, or in single bytes where that would show
/// both alike.
std::pair<std::string, std::string> formatApart(std::uint64_t one, std::uint64_t other);

/// A number of things: "one film", "0 films", "3 films".
std::string formatCount(std::size_t count, const std::string& noun);

/// Seconds as "5 s", "2 min 03 s", "1 h 07 min"; "" for 0.
std::string formatDuration(std::uint64_t seconds);

}  // namespace playerx::model
