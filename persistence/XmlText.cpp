#include "persistence/XmlText.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace persistence {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr std::string_view kReplacementBytes = "\xEF\xBF\xBD";
constexpr std::size_t kAmpersandCost = 5;

/// Bytes to which a character can grow in a document: a quotation mark becomes "&quot;".
constexpr std::uint64_t kLongestEscape = 6;

/// Bytes of text that leave room for the markup below the 2 GiB that the library can count.
constexpr std::uint64_t kMostText = 1'500'000'000;

constexpr bool isCarried(char32_t c) {
  if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
  return c <= 0xD7FF || (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
}

constexpr std::size_t utf8Length(char32_t c) {
  if (c < 0x80) return 1;
  if (c < 0x800) return 2;
  return c < 0x10000 ? 3 : 4;
}

constexpr std::size_t costOf(char32_t c) { return c == '&' ? kAmpersandCost : utf8Length(c); }

constexpr std::uint8_t byteAt(std::string_view bytes, std::size_t index) {
  return static_cast<std::uint8_t>(bytes[index]);
}

/// Bytes of the sequence that a first byte announces; 0 for a byte that cannot be the first.
constexpr std::size_t announcedLength(std::uint8_t first) {
  if (first < 0x80) return 1;
  if (first < 0xC2) return 0;
  if (first < 0xE0) return 2;
  if (first < 0xF0) return 3;
  return first < 0xF5 ? 4 : 0;
}

struct Character {
  char32_t value = kReplacement;
  std::size_t length = 0;  ///< bytes; 0 when there is no character that XML can carry
};

/// The character at the beginning of `bytes`, which must not be empty.
Character firstCharacter(std::string_view bytes) {
  const std::uint8_t first = byteAt(bytes, 0);
  if (first >= 0x20 && first < 0x80) return {first, 1};
  const std::size_t length = announcedLength(first);
  if (length == 0 || length > bytes.size()) return {};
  char32_t value = length == 1 ? first : first & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byteAt(bytes, i) & 0xC0) != 0x80) return {};
    value = value << 6 | (byteAt(bytes, i) & 0x3FU);
  }
  const bool isShortest = utf8Length(value) == length;
  return isShortest && isCarried(value) ? Character{value, length} : Character{};
}

/// What stands for a character in a value; empty for one that stands for itself.
constexpr std::string_view escapeOf(char c) {
  switch (c) {
    case '"':
      return "&quot;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '&':
      return "&amp;";
    case '\t':
      return "&#9;";
    case '\n':
      return "&#10;";
    case '\r':
      return "&#13;";
    default:
      return {};
  }
}

}  // namespace

bool fitsDocument(std::uint64_t characters) { return characters <= kMostText / kLongestEscape; }

std::size_t longestValueFor(
    const std::function<std::uint64_t(std::size_t limit)>& charactersWithin) {
  std::size_t limit = kLongestXmlValue;
  while (!fitsDocument(charactersWithin(limit))) limit /= 2;
  return limit;
}

void appendEscaped(std::string& document, std::string_view text) {
  while (!text.empty()) {
    const auto special =
        std::find_if(text.begin(), text.end(), [](char c) { return !escapeOf(c).empty(); });
    document.append(text.begin(), special);
    if (special == text.end()) return;
    document += escapeOf(*special);
    text.remove_prefix(static_cast<std::size_t>(special - text.begin()) + 1);
  }
}

std::wstring carriedByXml(const std::wstring& text, std::size_t limit) {
  std::wstring carried = text;
  std::size_t cost = 0;
  for (std::size_t i = 0; i < carried.size(); ++i) {
    auto c = static_cast<char32_t>(carried[i]);
    if (!isCarried(c)) c = kReplacement;
    cost += costOf(c);
    if (cost > limit) {
      carried.resize(i);
      break;
    }
    carried[i] = static_cast<wchar_t>(c);
  }
  return carried;
}

std::string carriedByXml(const std::string& bytes, std::size_t limit) {
  std::string carried;
  std::size_t begin = 0;  // of the run that stays as it is
  std::size_t at = 0;
  for (std::size_t cost = 0; at < bytes.size();) {
    const Character next = firstCharacter(std::string_view(bytes).substr(at));
    cost += costOf(next.value);
    if (cost > limit) break;
    if (next.length == 0) {
      carried.append(bytes, begin, at - begin).append(kReplacementBytes);
      begin = ++at;
    } else {
      at += next.length;
    }
  }
  return carried.append(bytes, begin, at - begin);
}

}  // namespace persistence
