#pragma once

#include <cstddef>
#include <string>

namespace playerx::cli {

/// `text` (UTF-8) fit for a terminal: control characters, marks that turn the direction of text and
/// bytes that are not UTF-8 become "?", so that no title can steer the terminal.
std::string printable(const std::string& text);

/// What was typed, for a sentence: in quotes, and without the user name and password of an address.
std::string quoted(const std::string& typed);

/// A sentence without the user names and passwords of addresses that are words of it.
std::string withoutPasswords(const std::string& sentence);

/// The columns that `text` takes on a terminal.
std::size_t columnsOf(const std::string& text);

/// `text` cut to at most `columns` columns, "…" at its end when something was cut. Whole characters
/// alone are kept: a base with the marks upon it, an emoji of several parts.
std::string cutTo(const std::string& text, std::size_t columns);

/// A bar of `width` characters for `percent` (0..100): "[#####     ]" with the brackets counted.
std::string progressBar(int percent, int width);

}  // namespace playerx::cli
