#pragma once

#include <atomic>
#include <filesystem>

#include "playerx/transfers/FilmMark.h"

namespace playerx::transfers {

/// Copies a film to `to`, across file systems, and never overwrites: EEXIST when something has that
/// name. The copy is on the disk, and carries `mark`, before it appears. Returns 0 or an error
/// number (`errno` values), ECANCELED once `isCancelled` is set by another thread; then `to` is not
/// ours. `from` stays. Blocks for as long as a copy takes.
int copyFilm(const std::filesystem::path& from, const std::filesystem::path& to,
             const FilmMark& mark, const std::atomic<bool>& isCancelled);

}  // namespace playerx::transfers
