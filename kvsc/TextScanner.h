#pragma once

#include <optional>
#include <string_view>

namespace kvsc {

/// Reads a text piece by piece, as `scanf` does in the C locale, except that a word is a view of
/// the text and a number that does not fit is an error. An operation that fails consumes nothing. A
/// plain value; the text must outlive it.
class TextScanner {
 public:
  explicit TextScanner(std::string_view text) : rest_(text) {}

  /// Skips white space, then reads up to the next white space; nullopt at the end of the text.
  std::optional<std::string_view> word();

  /// Skips white space, then reads a decimal number with an optional sign; nullopt for anything
  /// else.
  std::optional<int> number();

  /// Consumes this character. Returns whether it was next.
  bool character(char expected);

 private:
  std::string_view afterSpace() const;

  std::string_view rest_;
};

}  // namespace kvsc
