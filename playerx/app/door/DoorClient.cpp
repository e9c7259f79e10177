#include "playerx/app/door/DoorClient.h"

#include <QDeadlineTimer>
#include <QFile>

namespace playerx::door {

namespace {

int left(const QDeadlineTimer& deadline) { return static_cast<int>(deadline.remainingTime()); }

}  // namespace

std::optional<QByteArray> DoorClient::connect(const std::string& path,
                                              std::chrono::milliseconds longest) {
  const QDeadlineTimer deadline(longest);
  socket_.connectToServer(QFile::decodeName(path.c_str()));
  if (!socket_.waitForConnected(left(deadline))) return std::nullopt;
  return receive(std::chrono::milliseconds(deadline.remainingTime()));
}

bool DoorClient::send(const QByteArray& line) {
  socket_.write(line + '\n');
  while (socket_.bytesToWrite() > 0) {
    if (!socket_.waitForBytesWritten(-1)) return false;
  }
  return true;
}

std::optional<QByteArray> DoorClient::receive(std::chrono::milliseconds longest) {
  const QDeadlineTimer deadline(longest);
  while (!socket_.canReadLine()) {
    if (!socket_.waitForReadyRead(left(deadline)) && !socket_.canReadLine()) return std::nullopt;
  }
  QByteArray line = socket_.readLine();
  line.chop(1);
  return line;
}

bool DoorClient::isConnected() const {
  return socket_.state() == QLocalSocket::ConnectedState || socket_.canReadLine();
}

}  // namespace playerx::door
