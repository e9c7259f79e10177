#pragma once

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "tests/soak/power/Clock.h"

namespace power_test {

/// What a program did to a file or folder, and what the entry's payload is.
enum class FileOperation : std::uint64_t {
  kCreate,           ///< its name; the number is 1 for a file that was not there before
  kWrite,            ///< the bytes; the number is their position
  kTruncate,         ///< nothing
  kSync,             ///< nothing; the number of entries there were when the sync began
  kRename,           ///< both names, a NUL between them
  kExchange,         ///< both names
  kUnlink,           ///< its name
  kSetAttribute,     ///< name and value, a NUL between them
  kRemoveAttribute,  ///< its name
};

/// Begins each entry of a record; the payload follows it. Names are relative to the folder.
struct OperationHead {
  std::int64_t time = 0;  ///< as `now` has it
  FileOperation kind = FileOperation::kCreate;
  std::uint64_t file = 0;  ///< stands for one file, whatever its name
  std::uint64_t size = 0;  ///< this and the times as they are afterwards
  std::int64_t modifiedSeconds = 0;
  std::int64_t modifiedNanoseconds = 0;
  std::uint64_t number = 0;
  std::uint64_t payload = 0;  ///< bytes
};

/// What was done to the files of a folder, in order.
class FileRecord {
 public:
  /// Reads a record; std::runtime_error when it is damaged.
  explicit FileRecord(const std::filesystem::path& file);

  std::size_t size() const { return entries_.size(); }
  std::int64_t timeOf(std::size_t entry) const { return entries_[entry].head.time; }

  /// Fills `folder` with what may be found when the power is cut just after an entry. Of what
  /// happened since the last sync, the changes of names, sizes and attributes came through up to
  /// some moment, in order; of the bytes, any blocks did.
  void cutAfter(std::size_t entry, const std::filesystem::path& folder, std::mt19937& random) const;

 private:
  struct Entry {
    OperationHead head;
    std::string payload;
  };
  class Replay;

  std::vector<Entry> entries_;
};

}  // namespace power_test
