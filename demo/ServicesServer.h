#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "demo/AccessGrants.h"
#include "demo/TicketSealer.h"

namespace httplib {
class Server;
struct Request;
struct Response;
}  // namespace httplib

namespace demo {

/// A protected film that the services know.
struct ProtectedFilm {
  std::string name;  ///< file name on the media server, of characters that an address may hold
  std::string title;
  std::string provider;
  std::int32_t usageId;
  std::int32_t ticketId;
  std::uint64_t size;  ///< bytes
};

/// The online services of the demo, as docs/services-protocol.md describes them: reads sealed
/// tickets, authorises downloads with short-lived credentials, counts confirmations.
///
/// `POST /control` with `{"mode": TEXT, "times": N}` makes the next N authorisations misbehave:
/// "error-5000", "error-32054" (until a slot is given), "error-7", "malformed", "bad-base64",
/// "expired" (credentials that are void at once), "lying-size", "silent" (no answer for a minute),
/// "not-ready". `GET /control` tells what was asked so far. The server calls back on its own
/// threads; every operation may be called from any thread.
class ServicesServer {
 public:
  /// `mediaAddress` is the media server's base address.
  ServicesServer(const TicketSealer::Key& key, std::string mediaAddress,
                 std::vector<ProtectedFilm> films);

  /// Adds the services' routes.
  void serve(httplib::Server& server);

  /// The content of a ticket file for these films, by their names.
  std::string sealedTicket(const std::vector<std::string>& names) const;

  AccessGrants& grants() { return grants_; }

 private:
  using Handler = void (ServicesServer::*)(const httplib::Request&, httplib::Response&);

  void readTicket(const httplib::Request& request, httplib::Response& response);
  void ready(const httplib::Request& request, httplib::Response& response);
  void authorize(const httplib::Request& request, httplib::Response& response);
  void confirm(const httplib::Request& request, httplib::Response& response);
  void setMode(const httplib::Request& request, httplib::Response& response);
  void report(const httplib::Request& request, httplib::Response& response);

  const ProtectedFilm* filmNamed(const std::string& name) const;
  std::string modeNow(int slot);
  std::string grantFor(const ProtectedFilm& film, const std::string& mode);

  const TicketSealer sealer_;
  const std::string mediaAddress_;
  const std::vector<ProtectedFilm> films_;
  AccessGrants grants_;

  std::mutex mutex_;
  std::string mode_;                                               // guarded by mutex_
  int modeTimes_ = 0;                                              // guarded by mutex_
  int authorizations_ = 0;                                         // guarded by mutex_
  std::vector<std::pair<std::int64_t, std::uint64_t>> confirmed_;  // guarded by mutex_
};

}  // namespace demo
