#pragma once

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "tests/soak/power/Clock.h"

namespace power_test {

/// What a file system writes at once, in bytes: eight sectors, each of which a disk writes whole or
/// not at all.
inline constexpr std::uint64_t kBlock = 4096;

/// Begins each entry of a record; the bytes written follow it. A flush has no bytes.
struct RecordHead {
  std::int64_t time = 0;
  std::uint64_t position = 0;
  std::uint64_t length = 0;
};

/// What was written to a disk, in order.
class DiskRecord {
 public:
  /// Reads a record; std::runtime_error when it is damaged.
  explicit DiskRecord(const std::filesystem::path& file);

  std::size_t size() const { return entries_.size(); }
  std::int64_t timeOf(std::size_t entry) const { return entries_[entry].head.time; }

  /// Makes of `disk`, the content before the first entry, what may be found when the power is cut
  /// just after an entry: everything before the last flush, and any of the sectors written since.
  void cutAfter(std::size_t entry, std::string& disk, std::mt19937& random) const;

 private:
  struct Entry {
    RecordHead head;
    std::string bytes;
  };

  std::vector<Entry> entries_;
};

}  // namespace power_test
