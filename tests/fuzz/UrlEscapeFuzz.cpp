// Input: a text.
#include <algorithm>

#include "persistence/URLEscape.h"
#include "tests/fuzz/Fuzz.h"

namespace {

constexpr const char* kNeverRaw = " <>#{}\\|^~";

/// Backslash and "|" change places on the way there and back.
std::string withBarsExchanged(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return c == '\\' ? '|' : c == '|' ? '\\' : c;
  });
  return text;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = fuzz::textOf(data, size);
  const std::string escaped = URLEscape::escape(text);
  fuzz::require(escaped.find_first_of(kNeverRaw) == std::string::npos,
                "ten characters are escaped");
  fuzz::require(escaped.size() >= text.size() && escaped.size() <= 3 * text.size(),
                "a character becomes three at most");
  fuzz::require(URLEscape::escape(escaped) == escaped, "what is escaped stays");
  const std::string plain = URLEscape::unescape(text);
  fuzz::require(plain.size() <= text.size(), "unescaping adds nothing");
  if (text.find('%') == std::string::npos) {
    fuzz::require(plain == text, "nothing to undo without a percent sign");
    fuzz::require(URLEscape::unescape(escaped) == withBarsExchanged(text), "a text comes back");
  }
  return 0;
}
