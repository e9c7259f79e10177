#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/Gate.h"
#include "tests/support/Loopback.h"
#include "tests/support/Script.h"

namespace support {

/// A real server on 127.0.0.1 that does to each connection exactly what its script says, in plain
/// TCP or under TLS, and remembers what it was sent.
///
/// The first connection gets the first script of `next`, and so on; with none left, a request is
/// read and answered by `onPath` or `onRequest`; else `always` is played. A connection that nothing
/// foresees is closed.
/// Owner: the test. Threads: one for accepting and one per connection, SIGPIPE blocked in each; all
/// operations from any thread. Failure: std::runtime_error from the constructors.
class ScriptedServer {
 public:
  enum class Tls { kAtOnce, kWhenScripted };
  using Handler = std::function<Script(const std::string& request)>;

  ScriptedServer();
  /// Under TLS from the first byte, or from the script's `startTls` on (a proxy).
  explicit ScriptedServer(const TlsSettings& settings, Tls start = Tls::kAtOnce);
  ~ScriptedServer();
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;

  std::uint16_t port() const { return port_; }
  /// "http(s)://host:port" with the path.
  std::string url(const std::string& path = "/", const std::string& host = "localhost") const;

  ScriptedServer& next(Script script);
  ScriptedServer& always(Script script);
  /// The script for requests with this target; the request's head has been read already.
  ScriptedServer& onPath(const std::string& path, Script script);
  ScriptedServer& onRequest(Handler handler);

  /// Connections accepted so far.
  std::size_t connectionCount() const;
  /// A copy of what is known of a connection now.
  ConnectionRecord connection(std::size_t index) const;
  /// Waits until that connection has come and its script has ended; std::runtime_error if it never
  /// does.
  ConnectionRecord ended(std::size_t index = 0) const;
  /// The bytes of all ended and running connections' requests, in the order of accepting.
  std::vector<std::string> requests() const;

  /// Ends every connection and listens no more; the destructor does the same.
  void stop();

 private:
  struct Worker;
  /// One connection: where its record lies and the script that was waiting for it.
  struct Visit {
    std::size_t index;
    std::optional<Script> script;
  };

  void start();
  void acceptLoop();
  Visit admit();
  void serve(const Visit& visit, UniqueFd fd);
  void converse(Connection& connection, const Visit& visit);
  std::optional<Script> scriptFor(Connection& connection);
  void reapFinished();

  UniqueFd listener_;
  std::uint16_t port_ = 0;
  TlsContext context_;
  Tls tlsStart_ = Tls::kAtOnce;
  Gate stopping_;

  mutable std::mutex mutex_;  // guards the members up to the blank line
  std::deque<Script> scripts_;
  std::optional<Script> always_;
  std::map<std::string, Script> paths_;
  Handler handler_;
  std::deque<ConnectionRecord> records_;

  std::deque<std::unique_ptr<Worker>> workers_;  // the accepting thread's own until it has ended
  std::unique_ptr<Worker> acceptor_;
};

}  // namespace support
