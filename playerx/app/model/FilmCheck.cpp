#include "playerx/app/model/FilmCheck.h"

#include "playerx/app/model/TextFormat.h"

namespace playerx {

namespace fs = std::filesystem;

std::string oddityOf(const ItemState& film, const fs::path& mediaFolder) {
  std::error_code error;
  const fs::path place = film.path;
  const fs::path instead = mediaFolder / place.filename();
  if (!fs::exists(place, error)) {
    return fs::exists(instead, error)
               ? film.title + " lies at " + instead.string() + ", in the present media folder."
               : "";
  }
  const std::uintmax_t size = fs::file_size(place, error);
  if (error || size >= film.size) return "";
  return film.title + " has " + formatBytes(size) + " although its server had announced " +
         formatBytes(film.size) + "; should it end early, remove it and get it again.";
}

}  // namespace playerx
