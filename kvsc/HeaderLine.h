#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kvsc {

/// A header's name and value, as a line spells them.
struct HeaderField {
  std::string name;
  std::string value;
};

/// Whether the line counts as a status line: it holds "HTTP" anywhere, be it in a header's value.
bool isStatusLine(std::string_view line);

/// The number that is the second word of a status line; nothing when there is none.
std::optional<int> statusCodeIn(std::string_view line);

/// Name and value of a line with ":". The value begins two characters after the ":", whatever they
/// are, and ends one character before the line feed. Nothing for a line without ":".
std::optional<HeaderField> headerFieldIn(std::string_view line);

}  // namespace kvsc
