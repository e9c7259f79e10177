#include "tests/support/TinyProxy.h"

#include <stdexcept>

#include "tests/support/FreePort.h"
#include "tests/support/WaitFor.h"

namespace support {
TinyProxy::TinyProxy(const std::string& user, const std::string& password) {
  const bool started = startOnFreePort([&](std::uint16_t port) {
    port_ = port;
    const auto file = folder_.write("tinyproxy.conf", configuration(user, password));
    process_ =
        std::make_unique<Process>(std::vector<std::string>{"tinyproxy", "-d", "-c", file.string()});
    return waitForPort(port_, [this] { return !process_->running(); });
  });
  if (started) return;
  throw std::runtime_error("tinyproxy does not start: " + process_->errors() + log());
}

// No ConnectPort line: every port may be tunnelled to.
std::string TinyProxy::configuration(const std::string& user, const std::string& password) const {
  const std::string text = "Port " + std::to_string(port_) +
                           "\nListen 127.0.0.1\nTimeout 600\nMaxClients 50\nAllow 127.0.0.1\n"
                           "LogLevel Connect\nLogFile \"" +
                           (folder_ / "proxy.log").string() + "\"\n";
  return user.empty() ? text : text + "BasicAuth " + user + " " + password + "\n";
}

std::string TinyProxy::log() const {
  const auto file = folder_ / "proxy.log";
  return std::filesystem::exists(file) ? readFile(file) : "";
}

}  // namespace support
