#include "persistence/RFCBase64Codec.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>

namespace kv64 {
namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
constexpr char kPadding = '=';
constexpr int kGroupBytes = 3;
constexpr std::size_t kGroupCharacters = 4;

/// Bits that are set only in the table entry of a character outside the alphabet.
constexpr std::uint8_t kInvalidBits = 0xC0;

using CharacterPair = std::array<char, 2>;

/// Per value of twelve bits: its two characters.
constexpr auto kPairs = [] {
  std::array<CharacterPair, 4096> pairs{};
  for (std::size_t value = 0; value < pairs.size(); ++value) {
    pairs[value] = {kAlphabet[value >> 6], kAlphabet[value & 0x3F]};
  }
  return pairs;
}();

constexpr auto kValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(0xFF);
  for (std::uint8_t value = 0; value < kAlphabet.size(); ++value) {
    values[static_cast<unsigned char>(kAlphabet[value])] = value;
  }
  return values;
}();

std::uint8_t valueOf(char c) { return kValues[static_cast<unsigned char>(c)]; }

/// Writes a full group of three bytes as four characters.
void encodeGroup(const unsigned char* bytes, char* out) {
  const CharacterPair first = kPairs[static_cast<std::size_t>(bytes[0] << 4 | bytes[1] >> 4)];
  const CharacterPair second = kPairs[static_cast<std::size_t>((bytes[1] & 0x0F) << 8 | bytes[2])];
  std::memcpy(out, first.data(), first.size());
  std::memcpy(out + first.size(), second.data(), second.size());
}

/// Writes a group of one or two bytes over the leading padding at `out`.
void encodeRemainder(const unsigned char* bytes, int count, char* out) {
  const std::array<unsigned char, kGroupBytes> group{
      bytes[0], count > 1 ? bytes[1] : static_cast<unsigned char>(0), 0};
  std::array<char, kGroupCharacters> text{};
  encodeGroup(group.data(), text.data());
  std::copy_n(text.begin(), count + 1, out);
}

/// Bytes that four characters stand for, as their padding tells.
int byteCountOf(const char* quad) {
  if (quad[3] != kPadding) return 3;
  return quad[2] == kPadding ? 1 : 2;
}

/// Writes the bytes of four characters, and a zero byte after fewer than three.
void decodeGroup(const char* quad, char* out) {
  const int count = byteCountOf(quad);
  const std::uint8_t a = valueOf(quad[0]);
  const std::uint8_t b = valueOf(quad[1]);
  const std::uint8_t c = count > 1 ? valueOf(quad[2]) : std::uint8_t{0};
  const std::uint8_t d = count > 2 ? valueOf(quad[3]) : std::uint8_t{0};
  if (((a | b | c | d) & kInvalidBits) != 0) return;
  out[0] = static_cast<char>(a << 2 | b >> 4);
  out[1] = count > 1 ? static_cast<char>(b << 4 | c >> 2) : '\0';
  if (count > 1) out[2] = count > 2 ? static_cast<char>(c << 6 | d) : '\0';
}

int paddingAtEnd(std::string_view text) {
  if (text.back() != kPadding) return 0;
  return text[text.size() - 2] == kPadding ? 2 : 1;
}

constexpr bool fitsInt(std::size_t count) {
  return count <= static_cast<std::size_t>(std::numeric_limits<int>::max());
}

constexpr std::size_t decodedSize(std::size_t characters) {
  return characters / kGroupCharacters * kGroupBytes;
}

bool isDecodable(std::size_t characters) {
  return characters != 0 && characters % kGroupCharacters == 0 && fitsInt(decodedSize(characters));
}

}  // namespace

std::string RFCBase64Codec::encode(char* data, int length) {
  if (data == nullptr || length <= 0) return {};
  const auto* bytes = reinterpret_cast<const unsigned char*>(data);
  const auto groups = static_cast<std::size_t>(length / kGroupBytes);
  const int remainder = length % kGroupBytes;
  std::string text((groups + (remainder != 0 ? 1 : 0)) * kGroupCharacters, kPadding);
  char* out = text.data();
  for (std::size_t group = 0; group < groups; ++group) {
    encodeGroup(bytes, out);
    bytes += kGroupBytes;
    out += kGroupCharacters;
  }
  if (remainder != 0) {
    encodeBlock(data + groups * kGroupBytes, remainder).copy(out, kGroupCharacters);
  }
  return text;
}

std::string RFCBase64Codec::encode(std::string data) {
  if (!fitsInt(data.size())) return {};
  return encode(data.data(), static_cast<int>(data.length()));
}

char* RFCBase64Codec::decode(std::string text, int* length) {
  *length = 0;
  if (!isDecodable(text.size())) return nullptr;
  const std::size_t size = decodedSize(text.size());
  auto bytes = std::make_unique<char[]>(size);
  for (std::size_t group = 0; group < size / kGroupBytes; ++group) {
    decodeGroup(text.data() + group * kGroupCharacters, bytes.get() + group * kGroupBytes);
  }
  *length = static_cast<int>(size) - paddingAtEnd(text);
  return bytes.release();
}

std::string RFCBase64Codec::encodeBlock(char* group, int count) {
  std::string block(kGroupCharacters, kPadding);
  const auto* bytes = reinterpret_cast<const unsigned char*>(group);
  if (count >= kGroupBytes) {
    encodeGroup(bytes, block.data());
  } else if (count > 0) {
    encodeRemainder(bytes, count, block.data());
  }
  return block;
}

void RFCBase64Codec::decodeBlock(std::string quad, char* out) {
  if (quad.size() == kGroupCharacters) decodeGroup(quad.data(), out);
}

int RFCBase64Codec::charValue(char c) {
  const std::uint8_t value = valueOf(c);
  return (value & kInvalidBits) != 0 ? -1 : value;
}

}  // namespace kv64
