#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"
#include "tests/support/TestPki.h"

namespace support {

/// What one nginx serves. The defaults: plain HTTP, files of a folder of its own, with ranges.
struct NginxOptions {
  std::filesystem::path root = {};   ///< empty: a folder inside the fixture
  std::optional<Identity> tls = {};  ///< serve TLS with it
  std::string protocols = "TLSv1.2 TLSv1.3";
  std::string ciphers = {};                      ///< TLS 1.2 list; empty: nginx's own
  std::optional<Identity> clientAuthority = {};  ///< ssl_verify_client on, against it
  std::string user = {}, password = {};          ///< auth_basic for everything
  std::string limitRate = {};                    ///< "200k" bytes per second; empty: no limit
  bool ranges = true;
  std::string serverSnippet = {};  ///< further directives and locations, verbatim
};

/// A real nginx on a free loopback port, with its own configuration and nothing of the system's.
/// Ready for connections once constructed; `stop` and `start` again keep the port.
/// Owner: the test, on the thread that made it. Failure: std::runtime_error with nginx's words.
class Nginx {
 public:
  explicit Nginx(NginxOptions options = {});

  std::uint16_t port() const { return port_; }
  std::string url(const std::string& path = "/", const std::string& host = "localhost") const;
  const std::filesystem::path& root() const { return options_.root; }

  /// Puts a file below the root.
  std::filesystem::path serve(const std::string& name, const std::string& content) const;

  void stop();
  void start();

  std::string accessLog()
      const;  ///< a line per request: method, target, status, bytes, range, agent
  std::string errorLog() const;

 private:
  std::string configuration() const;
  std::string serverBlock() const;
  bool startOnce();

  TempDir folder_;
  NginxOptions options_;
  std::uint16_t port_ = 0;
  std::unique_ptr<Process> process_;
};

}  // namespace support
