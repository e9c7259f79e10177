#include "playerx/platform/NativePath.h"

#include <cerrno>
#include <system_error>

#include "playerx/platform/Text.h"

namespace playerx {

std::optional<std::filesystem::path> nativePath(const std::wstring& path) {
  if (path.find(L'\0') != std::wstring::npos) return std::nullopt;
  return std::filesystem::path(toQString(path).toStdString());
}

std::filesystem::path followLinks(std::filesystem::path path, int& error) {
  constexpr int kMostLinks = 40;  // the system's own limit
  std::error_code failure;
  for (int links = 0; links < kMostLinks; ++links) {
    const std::filesystem::path target = std::filesystem::read_symlink(path, failure);
    if (failure) {
      error = 0;
      return path;
    }
    path = path.parent_path() / target;  // an absolute target replaces the folder
  }
  error = ELOOP;
  return path;
}

}  // namespace playerx
