#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace playerx::model {

/// Bytes in units of 1000 with one decimal: "0 B", "999 B", "1.0 kB", "1.5 GB".
std::string formatBytes(std::uint64_t bytes);

/// A number of things: "one film", "0 films", "3 films".
std::string formatCount(std::size_t count, const std::string& noun);

/// Seconds as "5 s", "2 min 03 s", "1 h 07 min"; "" for 0.
std::string formatDuration(std::uint64_t seconds);

}  // namespace playerx::model
