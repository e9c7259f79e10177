#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "playerx/platform/Descriptor.h"

namespace playerx::transfers {

/// Films from this size on do not come in a moment: space is reserved for them, and what is known
/// of them is kept from their beginning.
inline constexpr std::uint64_t kLargeFilm = std::uint64_t{4} << 20U;

/// The bytes of a file while it arrives: appended in large writes, on space that is reserved ahead.
/// A hundredth of the disk, 256 MB at most, is left to everything else on it: what would take more
/// fails with ENOSPC.
///
/// Used by one thread at a time, but for `sync`, which may run beside everything else. Failures are
/// error numbers (`errno` values), 0 for success; after a failure only the bytes that were written
/// count.
class PartFile {
 public:
  /// Owns the open file, of which the first `size` bytes count.
  PartFile(Descriptor file, std::uint64_t size);

  /// Bytes there, those still in memory included.
  std::uint64_t size() const { return written_ + buffer_.size(); }
  int descriptor() const { return file_.get(); }

  int append(const char* data, std::size_t length);

  /// Writes what is still in memory.
  int flush();

  /// Cuts the file down to its first `size` bytes, and whatever was reserved behind them.
  int cut(std::uint64_t size);

  /// Makes sure that there is room for a file of `total` bytes, and reserves it for a large one.
  /// Does not change the size. A file system that cannot reserve is not a failure.
  int reserve(std::uint64_t total);

  /// Releases reserved space that holds no bytes.
  void releaseReserve();

  /// Reads `length` bytes from `offset`; false when they are not all there or cannot be read.
  bool read(std::uint64_t offset, char* data, std::size_t length);

  /// Waits until all written bytes are on the disk.
  int sync() const;

 private:
  int write(const char* data, std::size_t length);
  bool leavesRoom(std::uint64_t bytes) const;

  const Descriptor file_;
  std::uint64_t written_;
  std::uint64_t reserved_ = 0;  ///< the size up to which space is reserved; 0: none is
  std::vector<char> buffer_;
};

}  // namespace playerx::transfers
