#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"
#include "tests/support/TestPki.h"
#include "tests/system/PlayerHome.h"

namespace system_test {

/// The demo's media and services server over TLS, with one protected film, "film.mkv".
/// Owner: the test, on the thread that made it.
class DemoServer {
 public:
  /// `rate` in bytes per second, 0 for as fast as can be.
  explicit DemoServer(std::uint64_t filmSize = 200'000, std::uint64_t rate = 0);

  const std::string& address() const { return address_; }
  std::filesystem::path film() const { return folder_ / "media/film.mkv"; }

  /// PEM file of the authority behind the server's certificate.
  std::filesystem::path authority() const { return folder_ / "ca.pem"; }

  /// A fresh copy of the protected film's ticket, which may be consumed.
  std::string ticket();

  /// Has the next `times` authorisations misbehave (demo/ServicesServer.h lists the modes).
  void misbehave(const std::string& mode, int times = 1);

  /// What the services were asked so far.
  Json report();
  int authorizations() { return report()["authorizations"]; }

  /// The bytes of the latest confirmation; 0 when there was none.
  std::uint64_t lastConfirmedBytes();

  /// Lets a player know this server.
  void introduceTo(PlayerHome& home) const;

 private:
  std::string ask(const std::vector<std::string>& curlArguments);

  support::TempDir folder_;
  std::unique_ptr<support::Process> process_;
  std::string address_;
  int tickets_ = 0;
};

}  // namespace system_test
