#pragma once

#include <QObject>
#include <QTimer>

namespace playerx::window {

/// Tells now and then how much room there is for films. Lives on the session's thread.
class RoomClock : public QObject {
  Q_OBJECT

 public:
  RoomClock();

  /// Tells at once, and from then on every few seconds.
  void start();

  void tell();

 Q_SIGNALS:
  void known(const QString& folder, quint64 freeBytes);

 private:
  QTimer ticks_;
};

}  // namespace playerx::window
