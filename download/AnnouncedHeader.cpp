#include "download/AnnouncedHeader.h"

#include <cstddef>
#include <cstdlib>

namespace download {
namespace {

constexpr std::size_t kLengthValueAt = 15;
constexpr std::size_t kLocationValueAt = 10;

std::string from(const std::string& line, std::size_t position) {
  return position < line.size() ? line.substr(position) : std::string();
}

std::string lowerCase(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

}  // namespace

std::int64_t leadingNumber(const std::string& text) {
  return std::strtoll(text.c_str(), nullptr, 10);
}

std::optional<std::int64_t> announcedLength(const std::string& line) {
  const std::string name = "content-length";
  if (lowerCase(line.substr(0, name.size())) != name) return std::nullopt;
  return leadingNumber(from(line, kLengthValueAt));
}

std::optional<std::string> announcedLocation(const std::string& line) {
  if (!line.starts_with("Location:")) return std::nullopt;
  return from(line, kLocationValueAt);
}

}  // namespace download
