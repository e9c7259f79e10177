#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace playerx {

/// Conversions that the platform's text, path and file code share. Pure.

struct WideText {
  std::wstring characters;
  bool malformed = false;  ///< at least one byte became U+FFFD
};

/// Every byte that belongs to no character becomes U+FFFD; a byte-order mark is kept.
WideText decodeUtf8(std::string_view bytes);

/// Surrogates and values above 0x10FFFF become U+FFFD.
QString toQString(std::wstring_view text);

}  // namespace playerx
