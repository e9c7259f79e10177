#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace download {

/// The number at the beginning of `text` by the rules of `atoll`: blanks, a sign, digits, limited
/// to 64 bits; 0 without a digit.
std::int64_t leadingNumber(const std::string& text);

/// The length that `line` announces when it is a "Content-Length" line, in any case; the value is
/// read from position 15 on.
std::optional<std::int64_t> announcedLength(const std::string& line);

/// The text from position 10 on, line end included, when `line` begins with exactly "Location:".
std::optional<std::string> announcedLocation(const std::string& line);

}  // namespace download
