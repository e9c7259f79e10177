#include "kvsc/CredentialText.h"

#include <algorithm>

namespace kvsc {
namespace {

/// Next state of the keystream; cmake/MaskCredentials.cmake uses the same rule.
std::uint32_t next(std::uint32_t state) { return (state * 1103515245U + 12345U) & 0x7fffffffU; }

/// Overwrites through a volatile pointer, so that the compiler cannot drop writes that are never
/// read.
void fill(volatile char* bytes, std::size_t length, char value) {
  for (std::size_t i = 0; i < length; ++i) bytes[i] = value;
}

}  // namespace

CredentialText::~CredentialText() { fill(buffer_.data(), buffer_.size(), '\xff'); }

void CredentialText::produce(const MaskedText& masked) {
  fill(buffer_.data(), buffer_.size(), '\0');
  length_ = std::min<std::size_t>(masked.length, buffer_.size());
  std::uint32_t state = masked.seed;
  for (std::size_t i = 0; i < length_; ++i) {
    state = next(state);
    buffer_[i] = static_cast<char>(masked.bytes[i] ^ ((state >> 16) & 0xffU));
  }
}

}  // namespace kvsc
