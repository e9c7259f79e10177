#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>

namespace playerx::transfers {

/// How a film gets to its place. Asked on the way; none of it is owned.
struct MoveGuide {
  /// Set by another thread: give up while nothing has changed yet.
  const std::atomic<bool>& giveUp;
  /// Told the number by which the file system will know the film at its place, before it appears
  /// there; once more when another way has to be tried. An error number other than 0 ends the move.
  std::function<int(std::uint64_t inode)> beforeAppearing;
};

/// Moves a film that is on the disk to `to`, across file systems too, and never overwrites: EEXIST
/// when something has that name. Across file systems the copy is on the disk before it appears.
/// Returns 0 or an error number, ECANCELED for a move that was given up; then `from` is whole and
/// `to` not ours. Blocks for as long as a copy takes.
int moveFilm(const std::filesystem::path& from, const std::filesystem::path& to,
             const MoveGuide& guide);

}  // namespace playerx::transfers
