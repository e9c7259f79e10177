// Input: bytes to encode, and the same bytes as a text to decode.
#include <memory>

#include "persistence/RFCBase64Codec.h"
#include "tests/fuzz/Fuzz.h"

namespace {

struct Decoded {
  std::string bytes;
  bool isText = false;
};

Decoded decode(kv64::RFCBase64Codec& codec, const std::string& text) {
  int length = -1;
  const std::unique_ptr<char[]> bytes(codec.decode(text, &length));
  fuzz::require(length >= 0, "a length is never negative");
  fuzz::require(bytes != nullptr || length == 0, "nothing is zero bytes long");
  fuzz::require(static_cast<std::size_t>(length) <= text.size() / 4 * 3, "four give three at most");
  if (!bytes) return {};
  return {std::string(bytes.get(), static_cast<std::size_t>(length)), true};
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kv64::RFCBase64Codec codec;
  const std::string input = fuzz::textOf(data, size);
  const std::string encoded = codec.encode(input);
  fuzz::require(encoded.size() == (size + 2) / 3 * 4, "three bytes give four characters");
  fuzz::require(encoded.find_first_of("+/") == std::string::npos, "a URL can hold the alphabet");
  const Decoded back = decode(codec, encoded);
  fuzz::require(back.isText == !input.empty() && back.bytes == input, "bytes survive their text");

  const Decoded decoded = decode(codec, input);
  fuzz::require(decoded.isText == (size != 0 && size % 4 == 0), "groups of four are a text");
  fuzz::require(!decoded.isText || codec.encode(decoded.bytes).size() <= size,
                "a text is no shorter than its bytes need");
  return 0;
}
