#pragma once

#include <filesystem>

namespace playerx {

/// The files of this process that were written once, do not change any more, and are not known to
/// be on the disk. Callers use `syncFileSoon` and `syncNameSoon` (`FileSync.h`).
///
/// All operations may be called from any thread. A file that cannot be synced stays as it is.

void addUnsyncedFile(const std::filesystem::path& absolute);

/// Adds a file whose content is on the disk, but perhaps not its name.
void addUnsyncedName(const std::filesystem::path& absolute);

/// Whether all added files are on the disk.
bool areAllFilesOnDisk();

/// Waits until all files added before, and their names, are on the disk.
void syncUnsyncedFiles();

}  // namespace playerx
