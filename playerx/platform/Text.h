#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace playerx {

/// What several rooms need to know of text. Pure.

/// Whether a byte is a control character of ASCII.
constexpr bool isControl(unsigned char byte) { return byte < 0x20 || byte == 0x7f; }

/// `text` without the blanks and line ends around it.
std::string_view trimmed(std::string_view text);

struct WideText {
  std::wstring characters;
  bool malformed = false;  ///< at least one byte became U+FFFD
};

/// Every byte that belongs to no character becomes U+FFFD; a byte-order mark is kept.
WideText decodeUtf8(std::string_view bytes);

/// Surrogates and values above 0x10FFFF become U+FFFD.
QString toQString(std::wstring_view text);

}  // namespace playerx
