#pragma once

#include <string>

namespace playerx::cli {

/// `text` (UTF-8) fit for a terminal: control characters and marks that turn the direction of
/// text become "?", so that no title can steer the terminal.
std::string printable(const std::string& text);

/// `text` cut to at most `columns` characters, the last one "…" when something was cut.
std::string cutTo(const std::string& text, std::size_t columns);

/// A bar of `width` characters for `percent` (0..100): "[#####     ]" with the brackets counted.
std::string progressBar(int percent, int width);

}  // namespace playerx::cli
