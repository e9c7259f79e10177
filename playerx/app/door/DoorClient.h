#pragma once

#include <QByteArray>
#include <QLocalSocket>
#include <chrono>
#include <optional>
#include <string>

namespace playerx::door {

/// The other end of a `DoorServer`: lines to and from the process that holds a queue. Used by one
/// thread; needs no event loop.
class DoorClient {
 public:
  DoorClient() = default;
  DoorClient(const DoorClient&) = delete;
  DoorClient& operator=(const DoorClient&) = delete;

  /// Connects and waits for the greeting, `longest` in all. Returns the greeting without its line
  /// feed; nullopt without an answer.
  std::optional<QByteArray> connect(const std::string& path, std::chrono::milliseconds longest);

  /// Sends a line, given without its line feed, and returns once the system has taken it. False
  /// when the other end has gone.
  bool send(const QByteArray& line);

  /// The next line, without its line feed; waits for it up to `longest`. Nullopt when none has come
  /// or the other end has gone: `isConnected` tells.
  std::optional<QByteArray> receive(std::chrono::milliseconds longest);

  /// Whether more lines may come.
  bool isConnected() const;

  /// To be polled for reading together with other descriptors; call `receive` until it returns
  /// nullopt before a wait. -1 when not connected.
  int descriptor() const { return static_cast<int>(socket_.socketDescriptor()); }

 private:
  QLocalSocket socket_;
};

}  // namespace playerx::door
