#include "kvsc/HeaderLine.h"

#include <algorithm>

#include "kvsc/TextScanner.h"

namespace kvsc {
namespace {

std::size_t endOfValue(std::string_view line) {
  const std::size_t lineFeed = line.find('\n');
  if (lineFeed != std::string_view::npos) return lineFeed > 0 ? lineFeed - 1 : 0;
  return std::min(line.find('\r'), line.size());
}

}  // namespace

bool isStatusLine(std::string_view line) { return line.find("HTTP") != std::string_view::npos; }

std::optional<int> statusCodeIn(std::string_view line) {
  TextScanner scanner(line);
  if (!scanner.word()) return std::nullopt;
  return scanner.number();
}

std::optional<HeaderField> headerFieldIn(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const std::size_t begin = colon + 2;
  const std::size_t end = endOfValue(line);
  const std::string_view value = begin < end ? line.substr(begin, end - begin) : std::string_view();
  return HeaderField{std::string(line.substr(0, colon)), std::string(value)};
}

}  // namespace kvsc
