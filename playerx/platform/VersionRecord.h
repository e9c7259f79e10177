#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>

namespace playerx {

/// Describes the content of a file in an extended attribute, which shows after a power cut whether
/// the content is complete.
struct VersionRecord {
  std::uint64_t sequence = 0;  ///< a later version has a higher one
  std::int64_t modified = 0;   ///< when the content was written, in nanoseconds, or `kBeingChanged`
  std::uint64_t boot = 0;      ///< `presentBoot` of the writer; `kOnDisk` once it is synced
  std::uint64_t seed = 0;      ///< of the hash
  std::uint64_t hash = 0;      ///< of the whole content, as `BlockHashes` has it

  std::uint64_t flags = 0;  ///< any of the following, for a version that is not on the disk

  /// Files that the content may mention (`UnsyncedFiles.h`) are not known to be on the disk.
  static constexpr std::uint64_t kReliesOnOthers = 1;
  /// No version of the file is known to be on the disk.
  static constexpr std::uint64_t kIsNew = 2;

  static constexpr std::uint64_t kOnDisk = 0;

  /// The time of content that is just being changed where it stands: the hash tells.
  static constexpr std::int64_t kBeingChanged = std::numeric_limits<std::int64_t>::min();
};

/// The modification time in nanoseconds.
std::int64_t modificationTime(const struct stat& status);

/// Identifies the present boot of the machine; never `kOnDisk`.
std::uint64_t presentBoot();

/// The record of an open file; nullopt if absent, or when the content was modified later:
/// a file that another program has written is read as it is.
std::optional<VersionRecord> readRecord(int file);

/// Whether a file has a record, even one of another content.
bool hasRecord(const std::filesystem::path& file);

/// Both return false where the file system or the file's owner does not allow it.
bool writeRecord(int file, const VersionRecord& record);
bool removeRecord(int file);

/// What a power cut may have done to a file.
enum class Integrity {
  kWhole,      ///< nothing
  kUncertain,  ///< nothing, but files that it mentions may be torn; an older version is better
  kTorn,
};

/// Stores an error number other than 0 (`errno` values) when the content has to be read for the
/// answer and cannot be.
Integrity integrityOf(int file, int& error);

}  // namespace playerx
