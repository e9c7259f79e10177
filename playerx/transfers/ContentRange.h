#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace playerx::transfers {

/// A decimal number without sign; nullopt when `text` is empty, holds anything else or exceeds 64
/// bits.
std::optional<std::uint64_t> parseNumber(std::string_view text);

/// What a Content-Range field says.
struct ContentRange {
  struct Bytes {
    std::uint64_t first = 0;
    std::uint64_t last = 0;  ///< inclusive, not below `first`

    bool operator==(const Bytes&) const = default;
  };
  std::optional<Bytes> bytes;          ///< nullopt: the range asked for does not exist ("*")
  std::optional<std::uint64_t> total;  ///< of the whole file; nullopt: not told ("*")

  bool operator==(const ContentRange&) const = default;
};

/// Reads the value of a Content-Range field in bytes: 'bytes 10-19/100', 'bytes 10-19/*',
/// 'bytes */100'. Nullopt for everything else and for a range beyond its total.
std::optional<ContentRange> parseContentRange(std::string_view value);

}  // namespace playerx::transfers
