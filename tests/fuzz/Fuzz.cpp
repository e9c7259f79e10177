#include "tests/fuzz/Fuzz.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace fuzz {

void require(bool holds, const char* text) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", text);
  std::abort();
}

std::string textOf(const std::uint8_t* data, std::size_t size) {
  return std::string(reinterpret_cast<const char*>(data), size);
}

Fields::Fields(const std::uint8_t* data, std::size_t size)
    : left_(reinterpret_cast<const char*>(data), size) {}

std::string Fields::next() {
  const std::size_t end = std::min(left_.find('\x1f'), left_.size());
  std::string field(left_.substr(0, end));
  left_.remove_prefix(std::min(end + 1, left_.size()));
  return field;
}

std::string Fields::rest() { return std::string(std::exchange(left_, {})); }

}  // namespace fuzz
