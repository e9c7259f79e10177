#include "playerx/app/model/FilmCheck.h"

#include <algorithm>
#include <climits>
#include <limits>

#include "playerx/app/model/TextFormat.h"
#include "playerx/platform/Text.h"

namespace playerx::model {

namespace fs = std::filesystem;

namespace {

/// Two sizes that differ can look the same in units of a thousand.
std::string describeDifference(std::uint64_t size, std::uint64_t announced) {
  if (formatBytes(size) != formatBytes(announced)) {
    return formatBytes(size) + " although its server had announced " + formatBytes(announced);
  }
  return std::to_string(size) + " bytes although its server had announced " +
         std::to_string(announced);
}

std::string whereNow(std::string_view name, const fs::path& mediaFolder, FolderNames& folders) {
  std::error_code error;
  const bool mayBeThere = !folders.lacks(mediaFolder.native(), name);
  if (!mayBeThere || !fs::exists(mediaFolder / name, error)) return " is not there any more.";
  return " lies at " + (mediaFolder / name).string() + ", in the present media folder.";
}

}  // namespace

std::string findOddity(const ItemState& film, const fs::path& mediaFolder) {
  FolderNames folders;
  return findOddity(film, mediaFolder, folders);
}

std::string findOddity(const ItemState& film, const fs::path& mediaFolder, FolderNames& folders) {
  if (film.path.empty()) return {};
  const std::string_view path = film.path;
  const std::size_t name = path.rfind('/') + 1;
  std::error_code error;
  const bool mayBeThere = !folders.lacks(path.substr(0, name), path.substr(name));
  const std::uintmax_t size = mayBeThere ? fs::file_size(path, error) : 0;
  const bool isGone = error == std::errc::no_such_file_or_directory ||
                      error == std::errc::not_a_directory || !mayBeThere;
  if (isGone) return film.title + whereNow(path.substr(name), mediaFolder, folders);
  if (error || film.size == 0 || size == film.size) return "";
  return film.title + " has " + describeDifference(size, film.size) +
         (size < film.size ? "; should it end early, remove it and get it again."
                           : "; it is kept as it came.");
}

std::uint64_t spaceNeededFor(std::uint64_t size) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  const std::uint64_t extra = size / 7168;
  return size > (kMost - extra) / 2 ? kMost : 2 * size + extra;
}

bool isFilmName(const std::string& name) {
  const bool isPlain =
      std::none_of(name.begin(), name.end(), isControl) && name.find('/') == std::string::npos;
  const bool isLong = name.size() > NAME_MAX;
  const bool isBlank = trimmed(name).empty();
  return isPlain && !decodeUtf8(name).malformed && !isLong && !isBlank && name != "." &&
         name != "..";
}

}  // namespace playerx::model
