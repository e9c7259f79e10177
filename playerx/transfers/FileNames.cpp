#include "playerx/transfers/FileNames.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <sstream>

namespace playerx::transfers {
namespace {

constexpr unsigned kMostNames = 100;

std::size_t extensionStart(const std::string& name) {
  const std::size_t slash = name.rfind('/');
  const std::size_t dot = name.rfind('.');
  const bool inName = dot != std::string::npos && (slash == std::string::npos || dot > slash);
  return inName ? dot : name.size();
}

/// A numbered name taken apart.
struct Numbered {
  std::string base;  ///< the name without the number
  unsigned number = 0;
};

std::optional<Numbered> withoutNumber(const std::string& name) {
  const std::size_t extension = extensionStart(name);
  const std::size_t opening = name.rfind('[', extension);
  if (extension == 0 || name[extension - 1] != ']' || opening == std::string::npos) {
    return std::nullopt;
  }
  Numbered numbered{name.substr(0, opening) + name.substr(extension), 0};
  const char* const end = name.data() + extension - 1;
  const auto [stop, error] = std::from_chars(name.data() + opening + 1, end, numbered.number);
  if (error != std::errc() || stop != end || name[opening + 1] == '0') return std::nullopt;
  return numbered.number >= 2 ? std::optional(numbered) : std::nullopt;
}

}  // namespace

std::optional<std::string> cleanOutputName(const std::string& name, const std::string& suffix) {
  if (name.find('\0') != std::string::npos) return std::nullopt;
  std::string clean;
  std::istringstream components(name);
  std::size_t last = 0;
  for (std::string component; std::getline(components, component, '/');) {
    if (component.empty() || component == ".") continue;
    if (component == ".." || component.size() > NAME_MAX) return std::nullopt;
    clean += (clean.empty() ? "" : "/") + component;
    last = component.size();
  }
  if (clean.empty() || last + suffix.size() > NAME_MAX) return std::nullopt;
  return clean;
}

std::string numberedName(const std::string& name, unsigned number) {
  const std::size_t extension = extensionStart(name);
  return name.substr(0, extension) + "[" + std::to_string(number) + "]" + name.substr(extension);
}

std::vector<std::string> namesBefore(const std::string& name) {
  std::vector<std::string> names = {name};
  for (auto numbered = withoutNumber(name); numbered && names.size() < kMostNames;
       numbered = withoutNumber(numbered->base)) {
    names.push_back(numbered->base);
    for (unsigned n = 2; n < numbered->number && names.size() < kMostNames; ++n) {
      names.push_back(numberedName(numbered->base, n));
    }
  }
  return names;
}

}  // namespace playerx::transfers
