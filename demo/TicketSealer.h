#pragma once

#include <array>
#include <optional>
#include <string>

namespace demo {

/// Seals texts so that only the holder of the key can read or make them: AES-256-GCM with a random
/// nonce, written as URL-safe base64 without line breaks. May be used by many threads at once.
class TicketSealer {
 public:
  using Key = std::array<unsigned char, 32>;

  explicit TicketSealer(const Key& key) : key_(key) {}

  /// A new random key.
  static Key randomKey();

  std::string seal(const std::string& text) const;

  /// The sealed text; nullopt when it was not sealed with this key or was changed since.
  std::optional<std::string> open(const std::string& sealed) const;

 private:
  const Key key_;
};

/// Text form of bytes in the URL-safe alphabet with padding, as the rights data is carried.
std::string encodeBase64(const std::string& bytes);
std::optional<std::string> decodeBase64(const std::string& text);

}  // namespace demo
