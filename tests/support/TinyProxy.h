#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace support {

/// A real tinyproxy on a free loopback port that tunnels (CONNECT) to any port.
/// Ready for connections once constructed.
/// Owner: the test, on the thread that made it. Failure: std::runtime_error with its log.
class TinyProxy {
 public:
  /// With a user, requests without that name and password are answered with 407.
  explicit TinyProxy(const std::string& user = "", const std::string& password = "");

  std::uint16_t port() const { return port_; }
  std::string log() const;

 private:
  std::string configuration(const std::string& user, const std::string& password) const;

  TempDir folder_;
  std::uint16_t port_ = 0;
  std::unique_ptr<Process> process_;
};

}  // namespace support
