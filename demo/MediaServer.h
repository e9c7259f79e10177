#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace httplib {
class Server;
struct Request;
}  // namespace httplib

namespace demo {

/// Whether a request for a protected film carries what it needs.
using AccessCheck = std::function<bool(const httplib::Request& request, const std::string& film)>;

/// What is served, and how.
struct Media {
  std::string folder;
  std::uint64_t rate = 0;  ///< bytes per second of each film; 0: as fast as can be
};

/// Serves the films of `media` on `server`: freely under /media/, and under /protected/ to
/// requests that `mayAccess` lets pass (401 otherwise). Whole files and ranges, with a strong
/// validator (ETag) and `If-Range`. The server calls back on its own threads.
void serveMedia(httplib::Server& server, const Media& media, AccessCheck mayAccess);

}  // namespace demo
