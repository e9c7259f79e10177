#include "persistence/URLEscape.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

constexpr std::string_view kEscapedCharacters = " <>#{}\\|^~";
constexpr std::string_view kHexDigits = "0123456789ABCDEF";
constexpr std::uint8_t kNoDigit = 0xFF;
constexpr std::size_t kEscapeLength = 3;

constexpr auto kIsEscaped = [] {
  std::array<bool, 256> table{};
  for (const char c : kEscapedCharacters) table[static_cast<unsigned char>(c)] = true;
  return table;
}();

constexpr auto kDigitValues = [] {
  std::array<std::uint8_t, 256> table{};
  table.fill(kNoDigit);
  for (std::uint8_t value = 0; value < kHexDigits.size(); ++value) {
    table[static_cast<unsigned char>(kHexDigits[value])] = value;
  }
  return table;
}();

bool isEscaped(char c) { return kIsEscaped[static_cast<unsigned char>(c)]; }

/// The code that stands for a character: its own, except that backslash and "|" have each other's.
unsigned char codeFor(char c) {
  if (c == '\\') return '|';
  if (c == '|') return '\\';
  return static_cast<unsigned char>(c);
}

char* writeEscape(char c, char* out) {
  const unsigned char code = codeFor(c);
  *out++ = '%';
  *out++ = kHexDigits[code >> 4];
  *out++ = kHexDigits[code & 0x0F];
  return out;
}

/// The character that the escape at `text` stands for; "%" when it is not one of the ten.
char characterAt(const char* text) {
  const std::uint8_t high = kDigitValues[static_cast<unsigned char>(text[1])];
  const std::uint8_t low = kDigitValues[static_cast<unsigned char>(text[2])];
  if (high == kNoDigit || low == kNoDigit) return '%';
  const char c = static_cast<char>(high << 4 | low);
  return isEscaped(c) ? c : '%';
}

}  // namespace

std::string URLEscape::escape(const std::string& text) {
  std::string escaped(text.size() * kEscapeLength, '\0');  // as if every byte were escaped
  char* out = escaped.data();
  for (const char c : text) {
    if (isEscaped(c)) {
      out = writeEscape(c, out);
    } else {
      *out++ = c;
    }
  }
  escaped.resize(static_cast<std::size_t>(out - escaped.data()));
  return escaped;
}

std::string URLEscape::unescape(const std::string& text) {
  std::string plain(text.size(), '\0');
  char* out = plain.data();
  const char* const end = text.data() + text.size();
  for (const char* in = text.data(); in != end; ++in) {
    *out = *in;
    if (*in == '%' && end - in >= static_cast<std::ptrdiff_t>(kEscapeLength)) {
      *out = characterAt(in);
      if (*out != '%') in += kEscapeLength - 1;
    }
    ++out;
  }
  plain.resize(static_cast<std::size_t>(out - plain.data()));
  return plain;
}
