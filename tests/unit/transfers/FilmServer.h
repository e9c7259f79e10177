#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/Gate.h"
#include "tests/support/ScriptedServer.h"

namespace playerx::transfers {

/// `size` bytes that differ from place to place and from seed to seed.
std::string filmBytes(std::size_t size, unsigned seed = 1);

/// What a film's server says of it. The defaults: a strong entity tag, ranges, a length.
struct Film {
  std::string content;
  std::string etag = "\"v1\"";    ///< empty: none
  std::string lastModified = {};  ///< empty: none
  std::string date = {};          ///< empty: none
  bool ranges = true;             ///< false: every answer is the whole film
  bool minds = true;              ///< false: If-Range is not looked at
  bool length = true;             ///< false: no Content-Length, the end of the stream is the end
  std::string extraHeaders = {};  ///< each line with its end
};

/// A server of films on a free loopback port, with everything that HTTP says of ranges, which can
/// be told to break off, to stall, or to answer otherwise. One request per connection.
/// Owner: the test. Threads: any.
class FilmServer {
 public:
  explicit FilmServer(Film film) : FilmServer(std::move(film), std::nullopt) {}
  FilmServer(Film film, const std::optional<support::TlsSettings>& tls);

  std::string url(const std::string& path = "/film.avi") const { return server_->url(path); }
  support::ScriptedServer& server() { return *server_; }

  void setFilm(Film film);

  /// The next answer ends, without goodbye, behind so many bytes of its body.
  FilmServer& cutNext(std::size_t bodyBytes);
  /// The next answer waits behind so many bytes of its body until the gate opens.
  FilmServer& holdNext(std::size_t bodyBytes, const support::Gate& gate);
  /// The next answer stops behind so many bytes of its body, for good.
  FilmServer& stallNext(std::size_t bodyBytes);
  /// Forgets what the next answers were to be.
  void answerAsUsual();
  /// The next answer is this, byte for byte.
  FilmServer& answerNext(const std::string& answer);

  /// The heads of all requests so far.
  std::vector<std::string> requests() const { return server_->requests(); }
  std::size_t requestCount() const { return server_->connectionCount(); }
  /// The value of a header of a request; empty when it has none.
  std::string header(std::size_t request, const std::string& name) const;

 private:
  using Shape = std::function<support::Script(const std::string& head, const std::string& body)>;

  support::Script respond(const std::string& request);
  FilmServer& shapeNext(Shape shape);

  mutable std::mutex mutex_;
  Film film_;
  std::deque<Shape> shapes_;
  std::unique_ptr<support::ScriptedServer> server_;
};

/// The value of a header in a request's head; empty when it is not there.
std::string headerOf(const std::string& head, const std::string& name);

}  // namespace playerx::transfers
