#include "tests/support/Script.h"

#include <utility>

namespace support {

Script& Script::then(Step step) {
  steps_.push_back(std::move(step));
  return *this;
}

Script& Script::readRequest() {
  return then([](Connection& connection) { connection.readRequest(); });
}

Script& Script::readBytes(std::size_t count) {
  return then([count](Connection& connection) { connection.readBytes(count); });
}

Script& Script::readToEnd() {
  return then([](Connection& connection) { connection.readToEnd(); });
}

Script& Script::send(std::string bytes) {
  return then([bytes = std::move(bytes)](Connection& connection) { connection.send(bytes); });
}

Script& Script::sendPieces(std::string bytes, std::size_t size) {
  return then([bytes = std::move(bytes), size](Connection& connection) {
    connection.sendPieces(bytes, size);
  });
}

Script& Script::drip(std::string bytes, std::chrono::milliseconds interval) {
  return then([bytes = std::move(bytes), interval](Connection& connection) {
    connection.drip(bytes, interval);
  });
}

Script& Script::startTls() {
  return then([](Connection& connection) { connection.startTls(); });
}

Script& Script::announce(Gate& gate) {
  return then([&gate](Connection&) { gate.open(); });
}

Script& Script::stallUntil(const Gate& gate) {
  return then([&gate](Connection& connection) { connection.waitFor(gate); });
}

Script& Script::stall() {
  return then([](Connection& connection) { connection.stall(); });
}

Script& Script::close() {
  return then([](Connection& connection) { connection.close(); });
}

Script& Script::truncate() {
  return then([](Connection& connection) { connection.truncate(); });
}

Script& Script::closeNow() {
  return then([](Connection& connection) { connection.closeNow(); });
}

Script& Script::reset() {
  return then([](Connection& connection) { connection.reset(); });
}

Script& Script::halfClose() {
  return then([](Connection& connection) { connection.halfClose(); });
}

void Script::play(Connection& connection) const {
  for (const Step& step : steps_) step(connection);
  if (connection.isOpen()) connection.close();
}

Script Script::answer(std::string bytes) {
  return Script().readRequest().send(std::move(bytes)).close();
}

std::string okResponse(const std::string& body, const std::string& headers) {
  return "HTTP/1.0 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" + headers +
         "\r\n" + body;
}

std::string bareResponse(const std::string& status, const std::string& headers) {
  return "HTTP/1.0 " + status + "\r\n" + headers + "\r\n";
}

}  // namespace support
