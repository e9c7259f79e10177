#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "kvsc/MaskedCredentials.h"

namespace kvsc {

/// The work buffer in which a credential's text is rebuilt. Used by one thread, on its stack; it
/// leaves 0xFF bytes in its place, so that no copy stays there. Masked texts fit: the build sees to
/// it.
class CredentialText {
 public:
  static constexpr std::size_t kCapacity = 2048;

  CredentialText() = default;
  CredentialText(const CredentialText&) = delete;
  CredentialText& operator=(const CredentialText&) = delete;
  ~CredentialText();

  /// Puts the text in the place of the one before, of which nothing is left. A text longer than the
  /// buffer is cut off at its end.
  void produce(const MaskedText& masked);

  /// A copy of the text.
  std::string text() const { return std::string(buffer_.data(), length_); }

 private:
  std::array<char, kCapacity> buffer_{};
  std::size_t length_ = 0;
};

}  // namespace kvsc
