#pragma once

#include <string>

namespace kvsc {

/// A text as the operations that take bytes take it.
inline const unsigned char* bytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace kvsc
