#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <optional>

namespace playerx {

/// What an extended attribute of a file says about its content, so that it can be told after a
/// power cut whether the content is whole.
struct VersionRecord {
  std::uint64_t sequence = 0;  ///< a later version has a higher one
  std::int64_t modified = 0;   ///< when the content was written, in nanoseconds
  std::uint64_t boot = 0;      ///< `presentBoot` of its writer; `kOnDisk` once that does not matter
  std::uint64_t seed = 0;      ///< of the hash
  std::uint64_t hash = 0;      ///< of the whole content, as `BlockHashes` has it

  std::uint64_t doubts = 0;  ///< any of the following, of a version that is not on the disk

  /// Files that the content may speak of (`FinishedFiles.h`) are not known to be on the disk.
  static constexpr std::uint64_t kReliesOnOthers = 1;
  /// No version of the file is known to be on the disk.
  static constexpr std::uint64_t kIsNew = 2;

  static constexpr std::uint64_t kOnDisk = 0;
};

/// The modification time in nanoseconds.
std::int64_t modificationTime(const struct stat& status);

/// Stands for the machine's present run; never `kOnDisk`.
std::uint64_t presentBoot();

/// The record of an open file; nullopt when there is none, and when the content was modified since:
/// a file that somebody else has written to is theirs, and is taken as it is.
std::optional<VersionRecord> readRecord(int file);

/// Whether there is a record for a file, of whichever content.
bool hasRecord(const std::filesystem::path& file);

/// Both return false where the file system or the file's owner does not allow it.
bool writeRecord(int file, const VersionRecord& record);
bool removeRecord(int file);

/// What a power cut may have done to a content.
enum class Integrity {
  kWhole,      ///< nothing
  kUncertain,  ///< nothing, but files that it speaks of may be torn; an older version is better
  kTorn,
};

/// Stores an error number other than 0 (`errno` values) when the content would have to be read and
/// cannot.
Integrity integrityOf(int file, int& error);

}  // namespace playerx
