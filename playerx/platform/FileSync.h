#pragma once

#include <filesystem>
#include <memory>

namespace playerx {

class FileVersions;

/// The files that this process replaces, and their way to the disk off the threads that replace
/// them.
///
/// All operations may be called from any thread. An orderly end of the process syncs what is left
/// and removes the hidden files. A file that cannot be synced stays as it is: its content is whole
/// in any case, only a power cut could take it back.

/// The versions of one file; the same object for the same path as long as it is in use.
std::shared_ptr<FileVersions> versionsOf(const std::filesystem::path& file);

/// Removes the hidden versions of a file that has been deleted or moved away, those of dead
/// processes too.
void forgetVersions(const std::filesystem::path& file);

/// Has a file that was replaced synced within a second, together with everything else that comes in
/// meanwhile; never waits for the disk. After the end of `main` it syncs before it returns.
void syncSoon(const std::filesystem::path& file);

/// Has a file that is written once and stays as it is, such as a film, and its name on the disk
/// within a second; never waits for the disk. It is there before a version of another file that is
/// saved from now on: what is saved may say that it is.
void syncFinishedSoon(const std::filesystem::path& file);

/// Returns when everything handed to the two before is synced.
void flushFileSyncs();

}  // namespace playerx
