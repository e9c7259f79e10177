#pragma once

#include <sys/stat.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace playerx {

/// How many bytes were moved, and the error number (`errno` values) that ended it; 0 on success.
struct IoResult {
  std::size_t bytes = 0;
  int error = 0;
};

/// Reads until `length` bytes are there, the file ends or reading fails.
IoResult readFully(int file, void* buffer, std::size_t length);

/// As `readFully`, from `position` on; the file's own position stays.
IoResult readFullyAt(int file, void* buffer, std::size_t length, std::int64_t position);

/// Writes until all bytes are taken or writing fails.
IoResult writeFully(int file, const void* buffer, std::size_t length);

/// As `writeFully`, from `position` on; the file's own position stays.
IoResult writeFullyAt(int file, const void* buffer, std::size_t length, std::int64_t position);

/// Copies the rest of one file to another, from the position of each. Returns 0 or an error number;
/// ECANCELED once `isCancelled` is set by another thread.
int copyRest(int from, int to, const std::atomic<bool>& isCancelled = false);

/// The permissions of what only its owner may read and write.
inline constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

/// Sets the permissions of a file; a file system without permissions keeps its own.
void setPermissions(int file, mode_t mode);

/// Syncs the folder that holds `file` before it returns. Returns 0 or an error number.
int syncFolderOf(const std::filesystem::path& file);

}  // namespace playerx
