#include "playerx/app/door/DoorServer.h"

#include <sys/socket.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTimer>
#include <algorithm>
#include <utility>

namespace playerx::door {

namespace {

/// How long the end of the server waits for a visitor to read what was sent to it.
constexpr int kDrainMilliseconds = 1000;

/// How often a socket that has closed by itself is opened again.
constexpr int kReopenMilliseconds = 1000;

/// Visitors that the system lets wait until they are looked at.
constexpr int kMostWaiting = 1024;

bool isOfThisUser(const QLocalSocket& socket) {
  ucred peer{};
  socklen_t length = sizeof peer;
  const auto descriptor = static_cast<int>(socket.socketDescriptor());
  return ::getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 &&
         peer.uid == ::geteuid();
}

}  // namespace

/// The part of the server that lives on its thread.
class DoorServer::Connections : public QObject {
 public:
  Connections(DoorServer& server, QByteArray greeting, QByteArray refusal)
      : server_(server), greeting_(std::move(greeting)), refusal_(std::move(refusal)) {}

  QString listen(const QString& path) {
    listener_ = std::make_unique<QLocalServer>();
    listener_->setListenBacklogSize(kMostWaiting);
    QObject::connect(listener_.get(), &QLocalServer::newConnection, this,
                     [this] { acceptPending(); });
    if (!open(path)) {
      return QFileInfo(path).isDir() ? QStringLiteral("a folder lies there")
                                     : listener_->errorString();
    }
    reopening_ = std::make_unique<QTimer>();
    QObject::connect(reopening_.get(), &QTimer::timeout, this, [this, path] {
      // It closes when the system has no descriptor for a visitor, and does not say so.
      if (!listener_->isListening()) open(path);
    });
    reopening_->start(kReopenMilliseconds);
    return {};
  }

  void send(Visitor visitor, const QByteArray& line) {
    const auto found = sockets_.find(visitor);
    if (found == sockets_.end()) return;
    QLocalSocket& socket = *found->second;
    // The line itself may be longer: the list of a long queue.
    if (socket.bytesToWrite() > kMostUnread) return socket.abort();
    socket.write(line + '\n');
    socket.flush();
  }

  void close() {
    reopening_.reset();
    listener_.reset();
    for (const auto& [visitor, socket] : std::exchange(sockets_, {})) {
      socket->disconnect(this);
      while (socket->bytesToWrite() > 0 && socket->waitForBytesWritten(kDrainMilliseconds)) {
      }
      socket->abort();
      delete socket;
    }
  }

 private:
  bool open(const QString& path) {
    QLocalServer::removeServer(path);
    // Not by an option of the listener's: that makes the socket in a folder beside it, which stays
    // when the player is killed then. Until the socket is closed to others, they are turned away.
    if (!listener_->listen(path)) return false;
    QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    return true;
  }

  void acceptPending() {
    while (QLocalSocket* const socket = listener_->nextPendingConnection()) {
      socket->setParent(nullptr);
      if (!isOfThisUser(*socket)) {
        delete socket;
      } else if (sockets_.size() < kMostVisitors) {
        accept(*socket);
      } else {
        refuse(*socket);
      }
    }
  }

  void refuse(QLocalSocket& socket) {
    socket.write(refusal_ + '\n');
    socket.flush();
    delete &socket;
  }

  void accept(QLocalSocket& socket) {
    const Visitor visitor = ++lastVisitor_;
    sockets_[visitor] = &socket;
    server_.add(visitor);
    QObject::connect(&socket, &QLocalSocket::readyRead, this, [this, visitor] { read(visitor); });
    QObject::connect(&socket, &QLocalSocket::disconnected, this,
                     [this, visitor] { leave(visitor); });
    send(visitor, greeting_);
  }

  void read(Visitor visitor) {
    const auto found = sockets_.find(visitor);
    if (found == sockets_.end()) return;
    QLocalSocket& socket = *found->second;
    while (socket.canReadLine()) {
      QByteArray text = socket.readLine();
      text.chop(1);
      server_.receive({visitor, text});
    }
    if (socket.bytesAvailable() > kLongestLine) socket.abort();
  }

  void leave(Visitor visitor) {
    const auto found = sockets_.find(visitor);
    if (found == sockets_.end()) return;
    read(visitor);
    found->second->deleteLater();
    sockets_.erase(visitor);
    server_.remove(visitor);
  }

  DoorServer& server_;
  const QByteArray greeting_;
  const QByteArray refusal_;
  std::unique_ptr<QLocalServer> listener_;
  std::unique_ptr<QTimer> reopening_;
  std::map<Visitor, QLocalSocket*> sockets_;
  Visitor lastVisitor_ = 0;
};

DoorServer::DoorServer(QByteArray greeting, QByteArray refusal, std::function<void()> wake)
    : wake_(std::move(wake)),
      connections_(std::make_unique<Connections>(*this, std::move(greeting), std::move(refusal))) {
  connections_->moveToThread(&thread_);
  thread_.setObjectName("door");
  thread_.start();
}

DoorServer::~DoorServer() {
  if (!thread_.isRunning()) return;
  QMetaObject::invokeMethod(
      connections_.get(), [this] { connections_->close(); }, Qt::BlockingQueuedConnection);
  thread_.quit();
  thread_.wait();
}

std::string DoorServer::listen(const std::string& path) {
  if (path.empty()) return "There is no place for the socket of the queue.";
  if (!thread_.isRunning()) return "No thread can be started for the socket of the queue.";
  QString problem;
  QMetaObject::invokeMethod(
      connections_.get(), [&] { problem = connections_->listen(QFile::decodeName(path.c_str())); },
      Qt::BlockingQueuedConnection);
  return problem.isEmpty()
             ? std::string()
             : "The socket " + path + " cannot be opened (" + problem.toStdString() + ").";
}

std::vector<DoorServer::Line> DoorServer::takeLines() {
  std::vector<Line> lines;
  bool hasMore = false;
  {
    const GuardLock lock(mutex_);
    for (auto& [visitor, waiting] : lines_) {
      for (std::size_t count = 0; count < kMostAtOnce && !waiting.empty(); ++count) {
        lines.push_back({visitor, std::move(waiting.front())});
        waiting.pop_front();
      }
    }
    std::erase_if(lines_, [](const auto& each) { return each.second.empty(); });
    hasMore = !lines_.empty();
  }
  if (hasMore) wake_();
  return lines;
}

void DoorServer::send(Visitor visitor, const QByteArray& line) {
  QMetaObject::invokeMethod(
      connections_.get(),
      [connections = connections_.get(), visitor, line] { connections->send(visitor, line); },
      Qt::QueuedConnection);
}

bool DoorServer::isThere(Visitor visitor) const {
  const GuardLock lock(mutex_);
  return std::find(visitors_.begin(), visitors_.end(), visitor) != visitors_.end();
}

void DoorServer::add(Visitor visitor) {
  const GuardLock lock(mutex_);
  visitors_.push_back(visitor);
}

void DoorServer::remove(Visitor visitor) {
  {
    const GuardLock lock(mutex_);
    std::erase(visitors_, visitor);
  }
  wake_();
}

void DoorServer::receive(Line line) {
  {
    const GuardLock lock(mutex_);
    lines_[line.visitor].push_back(std::move(line.text));
  }
  wake_();
}

}  // namespace playerx::door
