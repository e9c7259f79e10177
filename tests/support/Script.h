#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/Connection.h"

namespace support {

/// What a scripted server does on one connection, step by step:
///
///     Script().readRequest().send("HTTP/1.0 200 OK\r\n\r\n").stallUntil(gate).send("body").close()
///
/// A plain value. A script that runs out of steps ends with `close`.
class Script {
 public:
  using Step = std::function<void(Connection&)>;

  Script& readRequest();
  Script& readBytes(std::size_t count);
  Script& readToEnd();

  Script& send(std::string bytes);
  /// In pieces of `size` bytes, each read by the peer before the next is sent.
  Script& sendPieces(std::string bytes, std::size_t size);
  /// One byte per interval.
  Script& drip(std::string bytes, std::chrono::milliseconds interval);

  Script& startTls();

  /// Tells the test that the script has come to this point.
  Script& announce(Gate& gate);
  Script& stallUntil(const Gate& gate);
  Script& stall();

  Script& close();
  Script& truncate();
  Script& closeNow();
  Script& reset();
  Script& halfClose();

  /// Any other step.
  Script& then(Step step);

  void play(Connection& connection) const;

  /// Reads a request, answers with these bytes, closes.
  static Script answer(std::string bytes);

 private:
  std::vector<Step> steps_;
};

/// "HTTP/1.0 200 OK", its Content-Length, `headers` (each line with its end), and the body.
std::string okResponse(const std::string& body, const std::string& headers = "");

/// A response without body: `status` is "302 Found", headers as above.
std::string bareResponse(const std::string& status, const std::string& headers = "");

}  // namespace support
