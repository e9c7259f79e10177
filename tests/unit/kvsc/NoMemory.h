#pragma once

namespace kvsc {

/// While one exists, every `new (std::nothrow) T[n]` of its thread answers null.
class NoMemory {
 public:
  NoMemory();
  NoMemory(const NoMemory&) = delete;
  NoMemory& operator=(const NoMemory&) = delete;
  ~NoMemory();
};

}  // namespace kvsc
