#pragma once

#include <optional>
#include <string>

namespace playerx::transfers {

/// The output name as a path below the movies folder: components joined by "/", without empty ones
/// and without ".". None when nothing is left, when a component is ".." or too long for a file name
/// with `suffix` behind the last one, or when it holds a NUL.
std::optional<std::string> cleanOutputName(const std::string& name, const std::string& suffix);

/// The name with "[number]" before its extension; the extension begins at the last "." of the last
/// component. 'a/film.avi', 2 gives 'a/film[2].avi'.
std::string numberedName(const std::string& name, unsigned number);

/// True when `name` is `base`, or `base` with a number from 2 on: the names that are chosen for a
/// file whose own name is taken.
bool isNameOrVariant(const std::string& name, const std::string& base);

/// The base of the names under which the partials of one place are kept: hexadecimal digits, always
/// the same for the same text.
std::string partKey(const std::string& place);

}  // namespace playerx::transfers
