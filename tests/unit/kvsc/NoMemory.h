#pragma once

#include <cstddef>

namespace kvsc {

/// While one exists, every `new (std::nothrow) T[n]` of its thread answers null.
class NoMemory {
 public:
  NoMemory();
  NoMemory(const NoMemory&) = delete;
  NoMemory& operator=(const NoMemory&) = delete;
  ~NoMemory();

  /// The bytes of the last allocation that failed; 0 before the first.
  std::size_t bytesRefused() const;
};

}  // namespace kvsc
