#pragma once

#include <cstddef>

namespace playerx {

/// How far reading or writing came, and the error number (`errno` values) that ended it; 0 for
/// none.
struct IoResult {
  std::size_t bytes = 0;
  int error = 0;
};

/// Reads until `length` bytes are there, the file ends or reading fails.
IoResult readFully(int file, void* buffer, std::size_t length);

/// Writes until all bytes are taken or writing fails.
IoResult writeFully(int file, const void* buffer, std::size_t length);

}  // namespace playerx
