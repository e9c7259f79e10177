#pragma once

#include <QByteArray>
#include <QThread>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "playerx/platform/GuardMutex.h"

namespace playerx::door {

/// Most visitors at a time, longest line, and most unread bytes that a visitor may leave.
constexpr int kMostVisitors = 64;
constexpr qint64 kLongestLine = 16 * 1024 * 1024;
constexpr qint64 kMostUnread = 16 * 1024 * 1024;

/// Most lines of a visitor that are taken at once.
constexpr std::size_t kMostAtOnce = 50;

/// Carries lines between the process that holds a queue and other processes of the same user.
///
/// Listens on a local socket, on a thread of its own. A visitor is greeted with a line, then each
/// of its lines waits here until the owner takes it; what a visitor sends without a line's end is
/// dropped. Visitors of another user are turned away; so are those that send too long a line or
/// leave too much unread. All operations on the owner's thread.
class DoorServer {
 public:
  using Visitor = std::uint64_t;

  struct Line {
    Visitor visitor;
    QByteArray text;  ///< without its line feed
  };

  /// `greeting` and `refusal` are lines without their line feed; a visitor for whom there is no
  /// room gets `refusal` and is disconnected. `wake` is called, on the server's thread or by
  /// `takeLines`, when there is something to take, and must not wait.
  DoorServer(QByteArray greeting, QByteArray refusal, std::function<void()> wake);
  DoorServer(const DoorServer&) = delete;
  DoorServer& operator=(const DoorServer&) = delete;

  /// Hands out what was sent as far as visitors read it within a second, and ends.
  ~DoorServer();

  /// Opens the door. The caller holds the lock of the data folder: a socket that lies there belongs
  /// to a process that has died. Returns why not, in one sentence, and empty on success. Once.
  std::string listen(const std::string& path);

  /// The oldest lines of each visitor, in their order: no more than `kMostAtOnce`, so that no
  /// visitor keeps the others waiting. `wake` is called when there are more.
  std::vector<Line> takeLines();

  /// Sends a line, given without its line feed, to a visitor; nothing happens when it has gone.
  void send(Visitor visitor, const QByteArray& line);

  /// Whether the visitor is still there.
  bool isThere(Visitor visitor) const;

 private:
  class Connections;

  void add(Visitor visitor);
  void remove(Visitor visitor);
  void receive(Line line);

  const std::function<void()> wake_;
  QThread thread_;
  std::unique_ptr<Connections> connections_;  ///< lives on the thread

  mutable GuardMutex mutex_;
  std::map<Visitor, std::deque<QByteArray>> lines_ KVPM_GUARDED_BY(mutex_);  ///< none is empty
  std::vector<Visitor> visitors_ KVPM_GUARDED_BY(mutex_);
};

}  // namespace playerx::door
