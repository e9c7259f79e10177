#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <atomic>

namespace playerx::window {

/// Decides when the queue is looked at: soon after something has changed, yet no more than four
/// times a second. Lives on the thread that looks.
class LookClock : public QObject {
  Q_OBJECT

 public:
  LookClock();

  /// Start and stop the ticks.
  void start() { ticks_.start(); }
  void stop() { ticks_.stop(); }

  /// Something has changed: `due` follows once the rest after the last look is over. Any thread.
  void lookSoon();

  /// Emits `due` when that rest is over; for long operations, during which no timer fires.
  void lookIfRested();

  /// The queue is being looked at now.
  void rest();

 Q_SIGNALS:
  void due();

  /// Time for a look although nothing is said to have changed.
  void ticked();

 private:
  std::atomic<bool> isDue_{false};
  QElapsedTimer looked_;
  QTimer rest_;
  QTimer ticks_;
};

}  // namespace playerx::window
