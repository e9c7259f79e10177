#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"
#include "tests/support/TestPki.h"

namespace support {

/// A real `openssl s_server -www` on a free loopback port: it answers a GET with a page about the
/// session. Ready for connections once constructed.
/// Owner: the test, on the thread that made it. Failure: std::runtime_error with the tool's words.
class OpenSslServer {
 public:
  /// `arguments` go to s_server after the usual ones, such as {"-tls1_2"}.
  explicit OpenSslServer(const Identity& identity, std::vector<std::string> arguments = {});

  std::uint16_t port() const { return port_; }
  std::string url(const std::string& path = "/", const std::string& host = "localhost") const;
  std::string output() const { return process_->output(); }

  /// A file beside the server's own, for options that want one (`-CAfile`).
  std::string write(const std::string& name, const std::string& content) const;

 private:
  bool startOnce(const std::vector<std::string>& arguments);

  TempDir folder_;
  std::uint16_t port_ = 0;
  std::unique_ptr<Process> process_;
};

}  // namespace support
