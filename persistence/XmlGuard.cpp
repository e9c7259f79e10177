#include "persistence/XmlGuard.h"

#include <algorithm>
#include <cstddef>

namespace persistence {
namespace {

constexpr std::string_view kDocumentType = "<!DOCTYPE";
constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::size_t kMostAttributes = 64;

bool isQuote(char c) { return c == '"' || c == '\''; }

/// The attributes of the tag that `text`, which ends before the next "<", begins with. No value
/// holds a "<", and a ">" ends the tag wherever it stands outside a value.
std::size_t countAttributes(std::string_view text) {
  std::size_t count = 0;
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

bool hasOverloadedTag(std::string_view bytes) {
  for (std::size_t begin = bytes.find('<'); begin != std::string_view::npos;) {
    const std::size_t end = bytes.find('<', begin + 1);
    if (countAttributes(bytes.substr(begin, end - begin)) > kMostAttributes) return true;
    begin = end;
  }
  return false;
}

}  // namespace

bool isHarmlessXml(std::string_view bytes) {
  return bytes.find(kDocumentType) == std::string_view::npos && !hasOverloadedTag(bytes);
}

}  // namespace persistence
