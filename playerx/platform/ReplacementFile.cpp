#include "playerx/platform/ReplacementFile.h"

#include <optional>
#include <utility>

namespace playerx {

std::unique_ptr<ReplacementFile> ReplacementFile::create(const std::filesystem::path& target,
                                                         int& error) {
  const std::optional<struct stat> old = replaceableState(target, error);
  if (error != 0) return nullptr;
  HiddenFile file = HiddenFile::create(target, old, error);
  if (error != 0) return nullptr;
  return std::unique_ptr<ReplacementFile>(new ReplacementFile(std::move(file), target));
}

}  // namespace playerx
