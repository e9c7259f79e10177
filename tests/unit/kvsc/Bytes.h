#pragma once

#include <string>

namespace kvsc {

/// The bytes of a text, for operations that take `unsigned char`.
inline const unsigned char* bytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace kvsc
