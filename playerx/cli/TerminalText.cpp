#include "playerx/cli/TerminalText.h"

#include <algorithm>
#include <string_view>

namespace playerx::cli {

namespace {

bool isContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

/// Whether `text` begins with U+202A..U+202E or U+2066..U+2069, which turn the direction of what
/// follows.
bool turnsDirection(std::string_view text) {
  const std::string_view mark = text.substr(0, 3);
  return (mark >= "\xE2\x80\xAA" && mark <= "\xE2\x80\xAE") ||
         (mark >= "\xE2\x81\xA6" && mark <= "\xE2\x81\xA9");
}

}  // namespace

std::string printable(const std::string& text) {
  std::string clean;
  clean.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    // U+0080..U+009F, the control characters beyond ASCII, are C2 80..C2 9F.
    const bool secondControl = byte == 0xC2 && i + 1 < text.size() &&
                               static_cast<unsigned char>(text[i + 1]) >= 0x80 &&
                               static_cast<unsigned char>(text[i + 1]) < 0xA0;
    if (turnsDirection(std::string_view(text).substr(i))) {
      i += 2;
      clean += '?';
      continue;
    }
    if (secondControl) ++i;
    clean += secondControl || byte < 0x20 || byte == 0x7F ? '?' : text[i];
  }
  return clean;
}

std::string cutTo(const std::string& text, std::size_t columns) {
  std::size_t characters = 0;
  std::size_t keep = 0;  // bytes of the first columns - 1 characters
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (isContinuation(static_cast<unsigned char>(text[i]))) continue;
    if (++characters == columns) keep = i;
  }
  if (characters <= columns) return text;
  return text.substr(0, keep) + "…";
}

std::string progressBar(int percent, int width) {
  const int inner = std::max(0, width - 2);
  const int filled = inner * std::clamp(percent, 0, 100) / 100;
  return "[" + std::string(static_cast<std::size_t>(filled), '#') +
         std::string(static_cast<std::size_t>(inner - filled), ' ') + "]";
}

}  // namespace playerx::cli
