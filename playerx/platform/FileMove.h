#pragma once

#include <filesystem>

namespace playerx {

/// Moves the file `from` to `to`, across file systems too, and never overwrites: whatever has the
/// name `to` stays, and the move fails with EEXIST. Across file systems the content is on the disk
/// under its new name before the old name goes; a move that dies in between leaves `from` whole.
/// Returns 0 or an error number (`errno` values); then nothing has changed. May be called from any
/// thread; blocks for as long as a copy takes.
int moveFileWithoutOverwriting(const std::filesystem::path& from, const std::filesystem::path& to);

/// The way across file systems, whether or not `from` and `to` are on one.
int moveFileByCopying(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace playerx
