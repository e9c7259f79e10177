#pragma once

#include <filesystem>

namespace playerx {

/// Brings replaced files to the disk, off the threads that replaced them.
///
/// All operations may be called from any thread. A file that cannot be synced stays as it is: its
/// content is whole in any case, only a power cut could take it back.

/// Has `file` and its folder synced within a second, together with everything else that comes in
/// meanwhile; never waits for the disk. What dead writers have left beside `file` is deleted then.
/// After the end of `main` it syncs before it returns.
void syncSoon(const std::filesystem::path& file);

/// Returns when everything handed to `syncSoon` before is synced. An orderly end of the process
/// does the same.
void flushFileSyncs();

/// Syncs the folder that holds `file` before it returns.
void syncFolderOf(const std::filesystem::path& file);

}  // namespace playerx
