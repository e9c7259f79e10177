#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kvsc {

/// A header's name and value, as written in the line.
struct HeaderField {
  std::string name;
  std::string value;
};

/// Whether the line counts as a status line: it contains "HTTP" anywhere, even in a header's value.
bool isStatusLine(std::string_view line);

/// The number that is the second word of a status line; nullopt if absent.
std::optional<int> statusCodeIn(std::string_view line);

/// Name and value of a line with ":". The value begins two characters after the ":", whatever they
/// are, and ends one character before the line feed. Nullopt for a line without ":".
std::optional<HeaderField> headerFieldIn(std::string_view line);

}  // namespace kvsc
