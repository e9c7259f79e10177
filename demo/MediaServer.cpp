#include "demo/MediaServer.h"

#include <httplib.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

namespace demo {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPiece = 1 << 14;

/// A film on the server's disk.
struct Film {
  std::shared_ptr<std::ifstream> file;
  std::size_t size;
  std::string validator;
};

std::optional<Film> openFilm(const fs::path& path) {
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return std::nullopt;
  Film film;
  film.file = std::make_shared<std::ifstream>(path, std::ios::binary);
  film.size = fs::file_size(path, error);
  const auto changed = fs::last_write_time(path, error).time_since_epoch().count();
  film.validator = "\"" + std::to_string(film.size) + "-" + std::to_string(changed) + "\"";
  if (!*film.file || error) return std::nullopt;
  return film;
}

/// The name is one component of a path: nothing outside the folder can be named.
bool isPlainName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
         name.find('\0') == std::string::npos;
}

bool wantsAnotherVersion(const httplib::Request& request, const Film& film) {
  return request.has_header("If-Range") && request.get_header_value("If-Range") != film.validator;
}

void sendFilm(const httplib::Request& request, httplib::Response& response, const Film& film,
              std::uint64_t rate) {
  response.set_header("ETag", film.validator);
  response.set_header("Accept-Ranges", "bytes");
  if (wantsAnotherVersion(request, film)) {
    // The library applies the ranges it has parsed; a handler's only way to have the whole file
    // sent is to take them away. The request object itself is not const.
    const_cast<httplib::Request&>(request).ranges.clear();
  }
  if (film.size == 0) return response.set_content("", "application/octet-stream");
  response.set_content_provider(
      film.size, "application/octet-stream",
      [file = film.file, rate](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
        std::string piece(std::min<std::size_t>(length, kPiece), '\0');
        if (rate > 0)
          std::this_thread::sleep_for(std::chrono::microseconds(kPiece * 1000000 / rate));
        file->clear();
        file->seekg(static_cast<std::streamoff>(offset));
        file->read(piece.data(), static_cast<std::streamsize>(piece.size()));
        return file->gcount() > 0 && sink.write(piece.data(), static_cast<size_t>(file->gcount()));
      });
}

void answer(const httplib::Request& request, httplib::Response& response, const Media& media) {
  const std::string name = request.matches[1];
  const std::optional<Film> film =
      isPlainName(name) ? openFilm(fs::path(media.folder) / name) : std::nullopt;
  if (!film) {
    response.status = 404;
    return response.set_content("There is no such film.\n", "text/plain");
  }
  sendFilm(request, response, *film, media.rate);
}

}  // namespace

void serveMedia(httplib::Server& server, const Media& media, AccessCheck mayAccess) {
  server.Get("/media/(.+)", [media](const httplib::Request& request, httplib::Response& response) {
    answer(request, response, media);
  });
  server.Get("/protected/(.+)", [media, mayAccess = std::move(mayAccess)](
                                    const httplib::Request& request, httplib::Response& response) {
    if (mayAccess(request, request.matches[1])) return answer(request, response, media);
    response.status = 401;
    response.set_header("WWW-Authenticate", "Basic realm=\"films\"");
    response.set_content("This film needs credentials.\n", "text/plain");
  });
}

}  // namespace demo
