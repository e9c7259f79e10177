#pragma once

#include <filesystem>
#include <memory>

namespace playerx {

class FileVersions;

/// The files that this process replaces. They are synced on another thread than the ones that
/// replace them.
///
/// All operations may be called from any thread. An orderly end of the process syncs what is left
/// and removes the hidden files. A file that cannot be synced stays as it is: its content is
/// complete, and only a power cut could undo it.

/// The versions of one file; the same object for the same path as long as it is in use.
std::shared_ptr<FileVersions> versionsOf(const std::filesystem::path& file);

/// How this process's last attempt to replace a file ended: 0 or an error number; ECANCELED for one
/// that was dropped. 0 when no attempt is remembered.
int lastSaveError(const std::filesystem::path& file);

/// Removes the hidden versions of a file that has been deleted or moved away, including those of
/// dead processes.
void forgetVersions(const std::filesystem::path& file);

/// Requests the sync of a replaced file within a second, in one batch with other requests. Does not
/// wait for the disk, except after the end of `main`: then it syncs before it returns.
void syncSoon(const std::filesystem::path& file);

/// Requests the sync of a file that is written once, such as a film, and of its name, within a
/// second. Does not wait for the disk. Any version of another file that is saved from now on
/// reaches the disk later, so it may mention the file.
void syncFileSoon(const std::filesystem::path& file);

/// The same for a film that was synced before it got its name: only the name is left.
void syncNameSoon(const std::filesystem::path& file);

/// Waits until all earlier requests of the functions above are done.
void flushFileSyncs();

}  // namespace playerx
