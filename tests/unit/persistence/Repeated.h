#pragma once

#include <string>

namespace persistence {

/// `count` times the text.
inline std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

}  // namespace persistence
