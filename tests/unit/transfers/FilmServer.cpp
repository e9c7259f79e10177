#include "tests/unit/transfers/FilmServer.h"

#include <random>
#include <utility>

namespace playerx::transfers {
namespace {

using support::Script;

std::string fieldLine(const std::string& name, const std::string& value) {
  return value.empty() ? "" : name + ": " + value + "\r\n";
}

std::string fieldsOf(const Film& film) {
  return fieldLine("ETag", film.etag) + fieldLine("Last-Modified", film.lastModified) +
         fieldLine("Date", film.date) + film.extraHeaders + "Connection: close\r\n\r\n";
}

std::string headOf(const Film& film, const std::string& status, std::size_t length,
                   const std::string& range = "") {
  const std::string lengthLine =
      film.length ? fieldLine("Content-Length", std::to_string(length)) : "";
  return "HTTP/1.1 " + status + "\r\n" + lengthLine + fieldLine("Content-Range", range) +
         fieldsOf(film);
}

// The beginning of 'bytes=N-'; none for a request without range.
std::optional<std::size_t> wantedStart(const Film& film, const std::string& request) {
  const std::string range = headerOf(request, "Range");
  const std::string condition = headerOf(request, "If-Range");
  if (!film.ranges || !range.starts_with("bytes=")) return std::nullopt;
  const bool isOther = condition != film.etag && condition != film.lastModified;
  if (film.minds && !condition.empty() && isOther) return std::nullopt;
  return std::stoull(range.substr(6));
}

}  // namespace

std::string filmBytes(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

std::string headerOf(const std::string& head, const std::string& name) {
  const std::string start = "\r\n" + name + ": ";
  const std::size_t found = head.find(start);
  if (found == std::string::npos) return {};
  const std::size_t value = found + start.size();
  return head.substr(value, head.find("\r\n", value) - value);
}

FilmServer::FilmServer(Film film, const std::optional<support::TlsSettings>& tls)
    : film_(std::move(film)),
      server_(tls ? std::make_unique<support::ScriptedServer>(*tls)
                  : std::make_unique<support::ScriptedServer>()) {
  server_->onRequest([this](const std::string& request) { return respond(request); });
}

void FilmServer::setFilm(Film film) {
  const std::lock_guard lock(mutex_);
  film_ = std::move(film);
}

std::string FilmServer::header(std::size_t request, const std::string& name) const {
  return headerOf(server_->connection(request).received, name);
}

FilmServer& FilmServer::shapeNext(Shape shape) {
  const std::lock_guard lock(mutex_);
  shapes_.push_back(std::move(shape));
  return *this;
}

FilmServer& FilmServer::cutNext(std::size_t bodyBytes) {
  return shapeNext([=](const std::string& head, const std::string& body) {
    return Script().send(head + body.substr(0, bodyBytes)).closeNow();
  });
}

FilmServer& FilmServer::holdNext(std::size_t bodyBytes, const support::Gate& gate) {
  return shapeNext([=, &gate](const std::string& head, const std::string& body) {
    return Script()
        .send(head + body.substr(0, bodyBytes))
        .stallUntil(gate)
        .send(body.substr(std::min(bodyBytes, body.size())));
  });
}

FilmServer& FilmServer::stallNext(std::size_t bodyBytes) {
  return shapeNext([=](const std::string& head, const std::string& body) {
    return Script().send(head + body.substr(0, bodyBytes)).stall();
  });
}

FilmServer& FilmServer::answerNext(const std::string& answer) {
  return shapeNext([=](const std::string&, const std::string&) { return Script().send(answer); });
}

void FilmServer::answerAsUsual() {
  const std::lock_guard lock(mutex_);
  shapes_.clear();
}

Script FilmServer::respond(const std::string& request) {
  const std::lock_guard lock(mutex_);
  const std::size_t size = film_.content.size();
  const auto start = wantedStart(film_, request);
  std::string head = headOf(film_, "200 OK", size);
  std::string body = film_.content;
  if (start && *start >= size) {
    head = headOf(film_, "416 Range Not Satisfiable", 0, "bytes */" + std::to_string(size));
    body.clear();
  } else if (start) {
    body = film_.content.substr(*start);
    head = headOf(film_, "206 Partial Content", body.size(),
                  "bytes " + std::to_string(*start) + "-" + std::to_string(size - 1) + "/" +
                      std::to_string(size));
  }
  if (shapes_.empty()) return Script().send(head + body);
  const Shape shape = std::move(shapes_.front());
  shapes_.pop_front();
  return shape(head, body);
}

}  // namespace playerx::transfers
