#include "persistence/XmlGuard.h"

#include <algorithm>
#include <cstddef>

namespace persistence {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

/// Comparisons that the library makes in a few seconds: enough for one element of 60,000
/// attributes, or for four thousand of a thousand.
constexpr std::uint64_t kMostComparisons = 2'000'000'000;

/// Elements with no more than this cost little, however many a readable file holds.
constexpr std::uint64_t kFewAttributes = 16;

bool isQuote(char c) { return c == '"' || c == '\''; }

/// Few tags have more "=" than an item has attributes, and looking for "=" is far cheaper than
/// counting attributes.
bool mayHaveManyAttributes(std::string_view tag) {
  std::size_t at = 0;
  for (std::uint64_t signs = 0; signs <= kFewAttributes; ++signs) {
    at = tag.find('=', at);
    if (at++ == std::string_view::npos) return false;
  }
  return true;
}

}  // namespace

/// A "<" begins a tag wherever it stands: no value holds one.
bool XmlGuard::take(std::string_view bytes) {
  std::size_t begin = bytes.find('<');
  takeTag(bytes.substr(0, begin));  // the rest of one
  while (begin != std::string_view::npos) {
    const std::size_t end = bytes.find('<', begin + 1);
    const std::string_view tag = bytes.substr(begin + 1, end - begin - 1);
    const bool isCut = end == std::string_view::npos;
    place_ = Place::kInTag;
    attributes_ = 0;
    if (isCut || mayHaveManyAttributes(tag)) takeTag(tag);
    begin = end;
  }
  return comparisons_ <= kMostComparisons;
}

/// Takes what follows of the present tag, in which there is no "<".
void XmlGuard::takeTag(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && place_ != Place::kOutside) at = step(text, at);
}

/// Takes at least one character, or leaves its place. Returns the index of the next character. A
/// ">" ends the tag wherever it stands outside a value.
std::size_t XmlGuard::step(std::string_view text, std::size_t at) {
  switch (place_) {
    case Place::kInTag:
      at = std::min(text.find_first_of("=>", at), text.size());
      if (at == text.size()) return at;
      place_ = text[at] == '=' ? Place::kBehindSign : Place::kOutside;
      return at + 1;
    case Place::kBehindSign:
      at = std::min(text.find_first_not_of(kBlanks, at), text.size());
      if (at == text.size()) return at;
      place_ = isQuote(text[at]) ? Place::kInValue : Place::kInTag;
      if (place_ == Place::kInTag) return at;
      quote_ = text[at];
      if (++attributes_ > kFewAttributes) comparisons_ += attributes_;
      return at + 1;
    case Place::kInValue:
      at = std::min(text.find(quote_, at), text.size());
      if (at == text.size()) return at;
      place_ = Place::kInTag;
      return at + 1;
    case Place::kOutside:
      break;
  }
  return text.size();
}

}  // namespace persistence
