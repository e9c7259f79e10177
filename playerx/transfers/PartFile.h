#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "playerx/platform/Descriptor.h"

namespace playerx::transfers {

/// The bytes of a file while it arrives: appended in large writes, on space that is reserved ahead.
///
/// Used by one thread at a time, but for `sync`, which may run beside everything else. Failures are
/// error numbers (`errno` values), 0 for none; after a failure the bytes that were written count,
/// no others.
class PartFile {
 public:
  /// Takes over the open file, of which the first `size` bytes count.
  PartFile(Descriptor file, std::uint64_t size);

  /// Bytes there, those that wait in memory included.
  std::uint64_t size() const { return written_ + buffer_.size(); }
  int descriptor() const { return file_.get(); }

  int append(const char* data, std::size_t length);

  /// Writes what waits in memory.
  int flush();

  /// Cuts the file down to its first `size` bytes, and whatever was reserved behind them.
  int cut(std::uint64_t size);

  /// Makes sure of the space for a file of `total` bytes, without changing its size. A file system
  /// that cannot reserve is no failure.
  int reserve(std::uint64_t total);

  /// Gives back reserved space that holds no bytes.
  void giveBack();

  /// Reads `length` bytes from `offset`; false when they are not all there or cannot be read.
  bool read(std::uint64_t offset, char* data, std::size_t length);

  /// Waits until all written bytes are on the disk.
  int sync() const;

 private:
  const Descriptor file_;
  std::uint64_t written_;
  std::vector<char> buffer_;
};

}  // namespace playerx::transfers
