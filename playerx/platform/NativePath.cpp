#include "playerx/platform/NativePath.h"

#include <sys/stat.h>
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

int makePrivateFolders(const std::filesystem::path& folder) {
  std::error_code failure;
  if (std::filesystem::is_directory(folder, failure)) return 0;
  const std::filesystem::path above = folder.parent_path();
  if (!above.empty() && above != folder) {
    if (const int error = makePrivateFolders(above); error != 0) return error;
  }
  if (::mkdir(folder.c_str(), S_IRWXU) == 0) return 0;
  if (errno != EEXIST) return errno;
  // Another process may have made it a moment ago.
  return std::filesystem::is_directory(folder, failure) ? 0 : ENOTDIR;
}

std::filesystem::path nearestExisting(std::filesystem::path path) {
  std::error_code ignored;
  while (!path.empty() && !std::filesystem::exists(path, ignored) && path != path.parent_path()) {
    path = path.parent_path();
  }
  return path.empty() ? std::filesystem::path(".") : path;
}

}  // namespace playerx
