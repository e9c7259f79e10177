#include "playerx/transfers/ContentRange.h"

#include <strings.h>

#include <charconv>

#include "playerx/platform/Text.h"

namespace playerx::transfers {
namespace {

constexpr std::string_view kUnit = "bytes";

std::optional<ContentRange::Bytes> parseBytes(std::string_view text) {
  const std::size_t dash = text.find('-');
  if (dash == std::string_view::npos) return std::nullopt;
  const auto first = parseNumber(text.substr(0, dash));
  const auto last = parseNumber(text.substr(dash + 1));
  if (!first || !last || *first > *last) return std::nullopt;
  return ContentRange::Bytes{*first, *last};
}

}  // namespace

std::optional<std::uint64_t> parseNumber(std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<ContentRange> parseContentRange(std::string_view value) {
  value = trimmed(value);
  if (value.size() <= kUnit.size() || value[kUnit.size()] != ' ') return std::nullopt;
  if (strncasecmp(value.data(), kUnit.data(), kUnit.size()) != 0) return std::nullopt;
  value = trimmed(value.substr(kUnit.size()));
  const std::size_t slash = value.find('/');
  if (slash == std::string_view::npos) return std::nullopt;
  const std::string_view range = value.substr(0, slash);
  const std::string_view total = value.substr(slash + 1);
  ContentRange result;
  if (total != "*" && !(result.total = parseNumber(total))) return std::nullopt;
  if (range == "*") return result.total ? std::optional(result) : std::nullopt;
  result.bytes = parseBytes(range);
  if (!result.bytes || (result.total && result.bytes->last >= *result.total)) return std::nullopt;
  return result;
}

}  // namespace playerx::transfers
