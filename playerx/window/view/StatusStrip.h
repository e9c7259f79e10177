#pragma once

#include <QWidget>

#include "playerx/window/model/QueueTotals.h"

class QLabel;

namespace playerx::window {

/// "1 of 4 films · 0.3 of 2.6 GB · 5.2 MB/s · about 8 min"; empty for an empty queue.
QString totalsText(const QueueTotals& totals, bool isPaused);

/// The line at the foot of the window: the queue's progress, and the room in the media folder.
class StatusStrip : public QWidget {
  Q_OBJECT

 public:
  explicit StatusStrip(QWidget* parent = nullptr);

  void showTotals(const QueueTotals& totals, bool isPaused);

  /// `folder` is the media folder's path.
  void showRoom(const QString& folder, quint64 freeBytes);

  /// Says a sentence to those who use a screen reader, and shows nothing.
  void announce(const QString& sentence);

 private:
  QLabel* const totals_;
  QLabel* const room_;
};

}  // namespace playerx::window
