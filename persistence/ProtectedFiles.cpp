#include "persistence/ProtectedFiles.h"

#include <exception>

#include "persistence/QueueFile.h"

namespace persistence {

void ProtectedFiles::protect(const std::wstring& path, const std::wstring& source) noexcept {
  try {
    sources_[path] = source;
  } catch (const std::exception&) {
    isEveryFileProtected_ = true;
  }
}

void ProtectedFiles::noteRead(const std::wstring& path, bool isRefused) noexcept {
  std::erase_if(sources_, [&](const auto& entry) { return entry.second == path; });
  isEveryFileProtected_ = false;
  refused_.erase(path);
  if (!isRefused) return;
  try {
    refused_.insert(path);
  } catch (const std::exception&) {
    isEveryFileProtected_ = true;
  }
}

bool ProtectedFiles::prepareToReplace(const std::wstring& path) noexcept {
  if (isEveryFileProtected_) return false;
  try {
    const auto found = sources_.find(path);
    if (found == sources_.end()) return setAsideRefused(path);
    if (isThere(found->second)) return false;
    sources_.erase(found);
    return true;
  } catch (const std::exception&) {
    return false;  // as if the file were there, or could not be moved
  }
}

bool ProtectedFiles::setAsideRefused(const std::wstring& path) {
  if (!refused_.contains(path)) return true;
  if (isThere(path) && !setAside(path)) return false;
  refused_.erase(path);
  return true;
}

}  // namespace persistence
