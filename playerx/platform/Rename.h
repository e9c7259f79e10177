#pragma once

#include <filesystem>

namespace playerx {

/// Whether something has this name; a link that leads nowhere counts. May be called from any
/// thread.
bool isTaken(const std::filesystem::path& path);

/// Gives the file `from` the name `to`, within one file system, unless something of that name
/// exists: then it fails with EEXIST. Returns 0 or an error number (`errno` values); then nothing
/// has changed. May be called from any thread.
int renameWithoutOverwriting(const std::filesystem::path& from, const std::filesystem::path& to);

/// Exchanges the names of two files in one step. Returns 0 or an error number; then nothing has
/// changed, as on a file system that cannot. May be called from any thread.
int exchangeNames(const std::filesystem::path& one, const std::filesystem::path& other);

/// The methods of `renameWithoutOverwriting`, from the best to the one that works on every file
/// system, each with its guarantee. If the process dies halfway, the first leaves nothing unusual,
/// the second the file under both names, the third an empty file as `to`.
int renameInOneStep(const std::filesystem::path& from, const std::filesystem::path& to);
int renameBySecondName(const std::filesystem::path& from, const std::filesystem::path& to);
int renameOntoPlaceholder(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace playerx
