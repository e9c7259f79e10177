#include "kvsc/TextScanner.h"

#include <algorithm>
#include <charconv>

namespace kvsc {
namespace {

constexpr std::string_view kSpace = " \t\n\v\f\r";

}  // namespace

std::optional<std::string_view> TextScanner::word() {
  const std::string_view text = afterSpace();
  if (text.empty()) return std::nullopt;
  const std::string_view found = text.substr(0, text.find_first_of(kSpace));
  rest_ = text.substr(found.size());
  return found;
}

std::optional<int> TextScanner::number() {
  std::string_view text = afterSpace();
  const bool plus = text.size() > 1 && text[0] == '+' && text[1] != '-';
  if (plus) text.remove_prefix(1);
  int value = 0;
  const char* end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, value);
  if (read.ec != std::errc()) return std::nullopt;
  rest_ = std::string_view(read.ptr, static_cast<std::size_t>(end - read.ptr));
  return value;
}

bool TextScanner::character(char expected) {
  if (rest_.empty() || rest_.front() != expected) return false;
  rest_.remove_prefix(1);
  return true;
}

std::string_view TextScanner::afterSpace() const {
  return rest_.substr(std::min(rest_.find_first_not_of(kSpace), rest_.size()));
}

}  // namespace kvsc
