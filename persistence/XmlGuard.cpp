#include "persistence/XmlGuard.h"

#include <cstddef>
#include <cstdint>

namespace persistence {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

/// Comparisons that the library makes in a few seconds: enough for one element of 60,000
/// attributes, or for four thousand of a thousand.
constexpr std::uint64_t kMostComparisons = 2'000'000'000;

/// Elements with no more than this cost little, however many a readable file holds.
constexpr int kFewAttributes = 16;

bool isQuote(char c) { return c == '"' || c == '\''; }

/// The attributes of the tag that `text`, which ends before the next "<", begins with. No value
/// holds a "<", and a ">" ends the tag wherever it stands outside a value.
std::uint64_t countAttributes(std::string_view text) {
  std::uint64_t count = 0;
  std::size_t at = text.find_first_of("=>");
  while (at != std::string_view::npos && text[at] == '=') {
    at = text.find_first_not_of(kBlanks, at + 1);
    if (at == std::string_view::npos) break;
    if (isQuote(text[at])) {
      ++count;
      at = text.find(text[at], at + 1);
      if (at == std::string_view::npos) break;
    }
    at = text.find_first_of("=>", at);
  }
  return count;
}

/// Few tags have more "=" than an item has attributes, and looking for "=" is far cheaper than
/// counting attributes.
bool mayHaveManyAttributes(std::string_view tag) {
  std::size_t at = 0;
  for (int signs = 0; signs <= kFewAttributes; ++signs) {
    at = tag.find('=', at);
    if (at++ == std::string_view::npos) return false;
  }
  return true;
}

std::uint64_t countComparisons(std::string_view tag) {
  if (!mayHaveManyAttributes(tag)) return 0;
  const std::uint64_t attributes = countAttributes(tag);
  return attributes * attributes / 2;
}

}  // namespace

bool isHarmlessXml(std::string_view bytes) {
  std::uint64_t comparisons = 0;
  for (std::size_t begin = bytes.find('<'); begin != std::string_view::npos;) {
    const std::size_t end = bytes.find('<', begin + 1);
    comparisons += countComparisons(bytes.substr(begin, end - begin));
    if (comparisons > kMostComparisons) return false;
    begin = end;
  }
  return true;
}

}  // namespace persistence
