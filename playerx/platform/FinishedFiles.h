#pragma once

#include <filesystem>

namespace playerx {

/// The files of this process that were written once, stay as they are from then on, and are not
/// known to be on the disk. `syncFinishedSoon` (`FileSync.h`) is the way to hand one over.
///
/// All operations may be called from any thread. A file that cannot be synced stays as it is.

void addFinishedFile(const std::filesystem::path& absolute);

/// Whether all that were added are on the disk.
bool areFinishedFilesOnDisk();

/// Returns when all that were added before, and their names, are on the disk.
void syncFinishedFiles();

}  // namespace playerx
