#include "tests/support/Nginx.h"

#include <signal.h>
#include <unistd.h>

#include <stdexcept>

#include "tests/support/FreePort.h"
#include "tests/support/Loopback.h"
#include "tests/support/WaitFor.h"

namespace support {
namespace {

std::string tlsDirectives(const NginxOptions& options, const TempDir& folder) {
  if (!options.tls) return {};
  const auto chain = folder.write("server.pem", options.tls->chainPem());
  const auto key = folder.write("server.key", options.tls->keyPem());
  std::string text = "    ssl_certificate " + chain.string() + ";\n    ssl_certificate_key " +
                     key.string() + ";\n    ssl_protocols " + options.protocols + ";\n";
  if (!options.ciphers.empty()) text += "    ssl_ciphers " + options.ciphers + ";\n";
  if (!options.clientAuthority) return text;
  const auto authority = folder.write("clients.pem", options.clientAuthority->certificatePem());
  return text + "    ssl_client_certificate " + authority.string() +
         ";\n    ssl_verify_client on;\n";
}

std::string passwordDirectives(const NginxOptions& options, const TempDir& folder) {
  if (options.user.empty()) return {};
  const auto file = folder.write("users", options.user + ":{PLAIN}" + options.password + "\n");
  return "    auth_basic \"loopback\";\n    auth_basic_user_file " + file.string() + ";\n";
}

// nginx gives its workers to "nobody" when root starts it, who may not read a private folder.
std::string userDirective() { return geteuid() == 0 ? "user root;\n" : ""; }

std::string temporaryPaths(const std::string& folder) {
  std::string text;
  for (const char* kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"})
    text += std::string("  ") + kind + "_temp_path " + folder + "/" + kind + ";\n";
  return text;
}

}  // namespace

Nginx::Nginx(NginxOptions options) : options_(std::move(options)) {
  if (options_.root.empty()) {
    options_.root = folder_ / "root";
    std::filesystem::create_directories(options_.root);
  }
  const bool started = startOnFreePort([this](std::uint16_t port) {
    port_ = port;
    return startOnce();
  });
  if (started) return;
  throw std::runtime_error("nginx does not start: " + process_->errors() + errorLog());
}

void Nginx::start() {
  if (!startOnce()) throw std::runtime_error("nginx does not start: " + errorLog());
}

bool Nginx::startOnce() {
  const auto file = folder_.write("nginx.conf", configuration());
  process_ = std::make_unique<Process>(
      std::vector<std::string>{"nginx", "-p", folder_.path().string(), "-e",
                               (folder_ / "error.log").string(), "-c", file.string()});
  return waitForPort(port_, [this] { return !process_->running(); });
}

void Nginx::stop() {
  process_->send(SIGTERM);
  process_->wait();
}

std::string Nginx::serverBlock() const {
  const std::string& rate = options_.limitRate;
  return "  server {\n    listen 127.0.0.1:" + std::to_string(port_) +
         (options_.tls ? " ssl" : "") + ";\n    server_name localhost;\n    root " +
         options_.root.string() + ";\n" + tlsDirectives(options_, folder_) +
         passwordDirectives(options_, folder_) +
         (rate.empty() ? "" : "    limit_rate " + rate + ";\n") +
         (options_.ranges ? "" : "    max_ranges 0;\n") + options_.serverSnippet + "\n  }\n";
}

// One process without a master: nothing is left behind when it is killed.
std::string Nginx::configuration() const {
  const std::string folder = folder_.path().string();
  return userDirective() + "daemon off;\nmaster_process off;\npid " + folder +
         "/nginx.pid;\nerror_log " + folder +
         "/error.log info;\nevents { worker_connections 512; }\nhttp {\n"
         "  log_format short '$request_method $request_uri $status $body_bytes_sent "
         "\"$http_range\" \"$http_user_agent\"';\n  access_log " +
         folder + "/access.log short;\n" + temporaryPaths(folder) +
         "  default_type application/octet-stream;\n  sendfile on;\n" + serverBlock() + "}\n";
}

std::string Nginx::url(const std::string& path, const std::string& host) const {
  return loopbackUrl(options_.tls ? "https" : "http", host, port_, path);
}

std::filesystem::path Nginx::serve(const std::string& name, const std::string& content) const {
  const std::filesystem::path target = options_.root / name;
  std::filesystem::create_directories(target.parent_path());
  writeFile(target, content);
  return target;
}

std::string Nginx::accessLog() const { return readFile(folder_ / "access.log"); }
std::string Nginx::errorLog() const {
  const auto file = folder_ / "error.log";
  return std::filesystem::exists(file) ? readFile(file) : "";
}

}  // namespace support
