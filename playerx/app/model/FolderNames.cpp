#include "playerx/app/model/FolderNames.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>

namespace playerx::model {

namespace fs = std::filesystem;

namespace {

/// Reading a folder, which may be a long one, pays off from about so many files in it.
constexpr int kFewFiles = 32;

/// Whether a file system could know a file by this name and by others that differ in more than
/// case: those of FAT have short names with "~", and drop a full stop at the end.
bool mayHaveOtherNames(std::string_view name) {
  const bool isPlain = std::all_of(name.begin(), name.end(),
                                   [](unsigned char c) { return c > ' ' && c < 0x7F && c != '~'; });
  return name.empty() || !isPlain || name.ends_with('.');
}

/// Equal for names that differ in case alone.
std::size_t hashOf(std::string_view name) {
  std::string small(name);
  for (char& c : small) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return std::hash<std::string>()(small);
}

/// Nullopt when the folder cannot be read; a missing one has no files.
std::optional<std::vector<std::size_t>> hashesOfNames(const fs::path& folder) {
  std::vector<std::size_t> hashes;
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) {
    return hashes;
  }
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    hashes.push_back(hashOf(entry->path().filename().native()));
  }
  if (error) return std::nullopt;
  std::sort(hashes.begin(), hashes.end());
  return hashes;
}

}  // namespace

bool FolderNames::lacks(std::string_view folder, std::string_view name) {
  if (folder.empty() || mayHaveOtherNames(name)) return false;
  auto known = folders_.find(folder);
  if (known == folders_.end()) known = folders_.emplace(folder, Folder()).first;
  Folder& names = known->second;
  if (++names.asked == kFewFiles) names.hashes = hashesOfNames(known->first);
  if (!names.hashes || names.hashes->empty()) return names.hashes.has_value();
  return !std::binary_search(names.hashes->begin(), names.hashes->end(), hashOf(name));
}

}  // namespace playerx::model
