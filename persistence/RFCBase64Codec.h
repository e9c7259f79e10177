#pragma once

#include <string>

#include "persistence/Base64Codec.h"

namespace kv64 {

/// Base64 with the URL-safe alphabet ("-" and "_" are the values 62 and 63) and "=" as padding.
/// Cheap to create; meant to be created on the stack where it is needed.
class RFCBase64Codec : public Base64Codec {
 public:
  std::string encode(char* data, int length) override;
  std::string encode(std::string data) override;

  /// A group of four with a character that is not in the alphabet, or with "=" anywhere but at its
  /// end, yields zero bytes; the length does not tell.
  char* decode(std::string text, int* length) override;

  // One group alone. `encode` and `decode` convert whole groups in place, by the same steps: a
  // string for each group would make encoding take twice as long, decoding three times.

  /// The four characters for the `count` (1..3) bytes at `group`, padded with "=".
  std::string encodeBlock(char* group, int count);

  /// Stores the three bytes of four characters at `out`: those a padded group stands for, then a
  /// zero byte. Stores nothing when a character that counts is not in the alphabet, or when `quad`
  /// does not hold four characters.
  void decodeBlock(std::string quad, char* out);

  /// The value 0..63 of a character; -1 for one that is not in the alphabet.
  int charValue(char c);
};

}  // namespace kv64
