#include "tests/support/OpenSslServer.h"

#include <stdexcept>

#include "tests/support/FreePort.h"
#include "tests/support/Loopback.h"
#include "tests/support/WaitFor.h"

namespace support {
OpenSslServer::OpenSslServer(const Identity& identity, std::vector<std::string> arguments) {
  write("chain.pem", identity.chainPem());
  write("key.pem", identity.keyPem());
  const bool started = startOnFreePort([&](std::uint16_t port) {
    port_ = port;
    return startOnce(arguments);
  });
  if (started) return;
  throw std::runtime_error("openssl s_server does not start: " + process_->errors());
}

// The port is not probed: s_server would take the probe for a client that failed.
bool OpenSslServer::startOnce(const std::vector<std::string>& arguments) {
  ProcessOptions options;
  options.arguments = {"openssl", "s_server",  "-accept",     "127.0.0.1:" + std::to_string(port_),
                       "-cert",   "chain.pem", "-cert_chain", "chain.pem",
                       "-key",    "key.pem",   "-www"};
  options.arguments.insert(options.arguments.end(), arguments.begin(), arguments.end());
  options.workingFolder = folder_.path();
  process_ = std::make_unique<Process>(options);
  waitFor([this] {
    return !process_->running() || process_->output().find("ACCEPT") != std::string::npos;
  });
  return process_->running();
}

std::string OpenSslServer::url(const std::string& path, const std::string& host) const {
  return loopbackUrl("https", host, port_, path);
}

std::string OpenSslServer::write(const std::string& name, const std::string& content) const {
  return folder_.write(name, content).string();
}

}  // namespace support
