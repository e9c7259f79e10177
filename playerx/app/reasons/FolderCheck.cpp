#include "playerx/app/reasons/FolderCheck.h"

#include <sys/statvfs.h>
#include <unistd.h>

#include <filesystem>

namespace playerx {

bool canHoldFiles(const std::string& folder) {
  std::filesystem::path existing = folder;
  std::error_code error;
  while (!std::filesystem::exists(existing, error) && existing.has_relative_path()) {
    existing = existing.parent_path();
  }
  if (!std::filesystem::is_directory(existing, error)) return false;
  struct statvfs disk {};
  if (statvfs(existing.c_str(), &disk) != 0) return true;
  return disk.f_blocks > 0 && access(existing.c_str(), W_OK) == 0;
}

}  // namespace playerx
