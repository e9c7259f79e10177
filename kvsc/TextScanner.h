#pragma once

#include <optional>
#include <string_view>

namespace kvsc {

/// Reads a text piece by piece, as `scanf` does in the C locale, but a word is a view of the text
/// and a number that does not fit is none. Each operation moves on only when it succeeds. A plain
/// value; the text must outlive it.
class TextScanner {
 public:
  explicit TextScanner(std::string_view text) : rest_(text) {}

  /// Skips white space, then takes everything up to the next; nothing at the end of the text.
  std::optional<std::string_view> word();

  /// Skips white space, then takes a decimal number with an optional sign.
  std::optional<int> number();

  /// Takes this very character. Returns whether it was there.
  bool character(char expected);

 private:
  std::string_view afterSpace() const;

  std::string_view rest_;
};

}  // namespace kvsc
