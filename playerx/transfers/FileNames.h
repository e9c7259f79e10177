#pragma once

#include <optional>
#include <string>
#include <vector>

namespace playerx::transfers {

/// The rights data of a film lies beside it under the film's whole name and this.
inline constexpr char kRightsSuffix[] = ".rights";

/// The output name as a path below the movies folder: components joined by "/", without empty ones
/// and without ".". Nullopt when nothing is left, when a component is ".." or too long for a file
/// name with `suffix` behind the last one, or when it holds a NUL.
std::optional<std::string> cleanOutputName(const std::string& name, const std::string& suffix);

/// The name with "[number]" before its extension; the extension begins at the last "." of the last
/// component. 'a/film.avi', 2 gives 'a/film[2].avi'.
std::string numberedName(const std::string& name, unsigned number);

/// The names under which a film may lie that is asked for as `name`: `name` itself and, when it is
/// a numbered one, those that were taken when the number was chosen. 'film[3].avi' gives
/// 'film[3].avi', 'film.avi', 'film[2].avi'; numbers begin with 2.
std::vector<std::string> namesBefore(const std::string& name);

}  // namespace playerx::transfers
