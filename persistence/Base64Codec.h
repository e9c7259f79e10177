#pragma once

#include <string>

/// Text forms of bytes.
namespace kv64 {

/// Turns bytes into base64 text and back.
///
/// A codec has no state: every operation may be called from any thread. Only allocation throws. The
/// order of the virtual operations is part of the interface.
class Base64Codec {
 public:
  Base64Codec() = default;
  Base64Codec(const Base64Codec&) = delete;
  Base64Codec& operator=(const Base64Codec&) = delete;

  /// The base64 text of `length` bytes, without line breaks. "" for a length of 0 or below.
  virtual std::string encode(char* data, int length) = 0;

  /// The base64 text of `data`. "" when its length does not fit an int.
  virtual std::string encode(std::string data) = 0;

  /// The bytes of a base64 text, as an array from `new[]` that the caller frees with `delete[]`.
  /// Stores the number of meaningful bytes in `*length`. Returns null and stores 0 for a text that
  /// is empty, whose length is not a multiple of 4, or whose bytes an int cannot count.
  virtual char* decode(std::string text, int* length) = 0;

 protected:
  ~Base64Codec() = default;
};

}  // namespace kv64
