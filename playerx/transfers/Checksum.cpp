#include "playerx/transfers/Checksum.h"

#include <QByteArray>
#include <algorithm>
#include <set>
#include <sstream>

namespace playerx::transfers {
namespace {

constexpr std::size_t kDigits = 64;

struct Entry {
  std::string sum;
  std::string name;  ///< of the file; empty when the line names none
};

std::string fileName(const std::string& path) { return path.substr(path.find_last_of('/') + 1); }

/// "SHA256 (name) = sum"
std::optional<Entry> taggedEntry(const std::string& line) {
  const std::size_t open = line.find('(');
  const std::size_t close = line.rfind(") = ");
  if (!line.starts_with("SHA256") || open == std::string::npos || close == std::string::npos ||
      close < open) {
    return std::nullopt;
  }
  const auto sum = normalSum(line.substr(close + 4));
  return sum ? std::optional(Entry{*sum, line.substr(open + 1, close - open - 1)}) : std::nullopt;
}

/// "sum  name", "sum *name" or "sum"
std::optional<Entry> plainEntry(const std::string& line) {
  const auto sum = normalSum(line.substr(0, line.find_first_of(" \t")));
  if (!sum) return std::nullopt;
  const std::size_t name = line.find_first_not_of(" \t*", kDigits);
  return Entry{*sum, name == std::string::npos ? "" : line.substr(name)};
}

}  // namespace

std::optional<std::string> normalSum(const std::string& text) {
  const QByteArray sum = QByteArray::fromStdString(text).toLower();
  // What is no digit is left out of the bytes.
  const bool isSum = text.size() == kDigits && QByteArray::fromHex(sum).toHex() == sum;
  return isSum ? std::optional(sum.toStdString()) : std::nullopt;
}

std::string checksumAddress(const std::string& film) {
  const std::size_t end = std::min(film.find_first_of("?#"), film.size());
  return film.substr(0, end) + ".sha256" + film.substr(end);
}

std::optional<std::string> sumIn(const std::string& content, const std::string& name) {
  std::set<std::string> sums;
  std::istringstream lines(content);
  for (std::string line; std::getline(lines, line);) {
    if (line.ends_with('\r')) line.pop_back();
    const auto tagged = taggedEntry(line);
    const auto entry = tagged ? tagged : plainEntry(line);
    if (!entry) continue;
    if (fileName(entry->name) == name) return entry->sum;
    sums.insert(entry->sum);
  }
  return sums.size() == 1 ? std::optional(*sums.begin()) : std::nullopt;
}

}  // namespace playerx::transfers
