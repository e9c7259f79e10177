#pragma once

#include <cstdint>
#include <string>

namespace playerx {

/// `text` (UTF-8) fit for a terminal: control characters and marks that turn the direction of
/// text become "?", so that no title can steer the terminal.
std::string printable(const std::string& text);

/// `text` cut to at most `columns` characters, the last one "…" when something was cut.
std::string cutTo(const std::string& text, std::size_t columns);

/// Bytes in units of 1000 with one decimal: "0 B", "999 B", "1.0 kB", "1.5 GB".
std::string formatBytes(std::uint64_t bytes);

/// Seconds as "5 s", "2 min 03 s", "1 h 07 min"; "" for 0.
std::string formatDuration(std::uint64_t seconds);

/// A bar of `width` characters for `percent` (0..100): "[#####     ]" with the brackets counted.
std::string progressBar(int percent, int width);

}  // namespace playerx
