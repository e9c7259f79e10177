#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "kvsc/MaskedCredentials.h"

namespace kvsc {

/// The work buffer in which a credential's text is rebuilt. Used by one thread, on its stack; its
/// destructor overwrites it with 0xFF bytes, so that no copy stays there. The build checks that
/// every masked text fits.
class CredentialText {
 public:
  static constexpr std::size_t kCapacity = 2048;

  CredentialText() = default;
  CredentialText(const CredentialText&) = delete;
  CredentialText& operator=(const CredentialText&) = delete;
  ~CredentialText();

  /// Replaces the text; nothing is left of the one before. A text longer than the buffer is cut
  /// off.
  void produce(const MaskedText& masked);

  /// A copy of the text.
  std::string text() const { return std::string(buffer_.data(), length_); }

 private:
  std::array<char, kCapacity> buffer_{};
  std::size_t length_ = 0;
};

}  // namespace kvsc
