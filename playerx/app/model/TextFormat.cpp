#include "playerx/app/model/TextFormat.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace playerx::model {

std::string formatBytes(std::uint64_t bytes) {
  if (bytes < 1000) return std::to_string(bytes) + " B";
  static constexpr std::array<const char*, 6> kUnits = {"kB", "MB", "GB", "TB", "PB", "EB"};
  double value = static_cast<double>(bytes) / 1000;
  std::size_t unit = 0;
  while (value >= 999.95 && unit + 1 < kUnits.size()) {
    value /= 1000;
    ++unit;
  }
  std::array<char, 32> text{};
  const std::to_chars_result end =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 1);
  return std::string(text.data(), end.ptr) + " " + kUnits.at(unit);
}

std::pair<std::string, std::string> formatApart(std::uint64_t one, std::uint64_t other) {
  std::pair<std::string, std::string> texts(formatBytes(one), formatBytes(other));
  if (texts.first != texts.second) return texts;
  return {std::to_string(one) + " B", std::to_string(other) + " B"};
}

std::string formatCount(std::size_t count, const std::string& noun) {
  return count == 1 ? "one " + noun : std::to_string(count) + " " + noun + "s";
}

std::string formatDuration(std::uint64_t seconds) {
  if (seconds == 0) return "";
  std::array<char, 48> text{};
  const unsigned long long hours = seconds / 3600;
  const unsigned long long minutes = seconds / 60 % 60;
  const unsigned long long rest = seconds % 60;
  if (hours > 0) {
    std::snprintf(text.data(), text.size(), "%llu h %02llu min", hours, minutes);
  } else if (minutes > 0) {
    std::snprintf(text.data(), text.size(), "%llu min %02llu s", minutes, rest);
  } else {
    std::snprintf(text.data(), text.size(), "%llu s", rest);
  }
  return text.data();
}

}  // namespace playerx::model
