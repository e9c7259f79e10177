#include "playerx/platform/NativePath.h"

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <string>
#include <system_error>

#include "playerx/platform/Text.h"

namespace playerx {

std::optional<std::filesystem::path> nativePath(const std::wstring& path) {
  if (path.find(L'\0') != std::wstring::npos) return std::nullopt;
  return std::filesystem::path(toQString(path).toStdString());
}

std::filesystem::path followLinks(std::filesystem::path path, int& error) {
  constexpr int kMostLinks = 40;  // the system's own limit
  char target[PATH_MAX];
  for (int links = 0; links < kMostLinks; ++links) {
    const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
    if (length < 0) {
      error = 0;
      return path;
    }
    // An absolute target replaces the folder.
    path = path.parent_path() / std::string(target, static_cast<std::size_t>(length));
  }
  error = ELOOP;
  return path;
}

std::filesystem::path nearestExisting(std::filesystem::path path) {
  std::error_code ignored;
  while (!path.empty() && !std::filesystem::exists(path, ignored) && path != path.parent_path()) {
    path = path.parent_path();
  }
  return path.empty() ? std::filesystem::path(".") : path;
}

}  // namespace playerx
