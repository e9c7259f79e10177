#pragma once

#include <QObject>
#include <QSet>
#include <QTimer>

#include "playerx/window/model/Film.h"

namespace playerx::window {

class WindowQueue;

/// Films that the user has removed and may still have back: out of sight and stopped at once, out
/// of the queue when the time to undo is over. Used on the UI thread.
class PendingRemoval : public QObject {
  Q_OBJECT

 public:
  static constexpr int kUndoMs = 10'000;

  /// The queue is not owned and outlives this.
  explicit PendingRemoval(WindowQueue& queue, QObject* parent = nullptr);

  /// Hides these films; an earlier removal becomes final. `withFiles` deletes complete films too.
  void begin(const QList<Film>& films, bool withFiles);

  /// Brings the films back.
  void undo();

  /// Makes the removal final now.
  void commit();

  bool canUndo() const { return !films_.isEmpty(); }

 Q_SIGNALS:
  /// These films are to be out of sight.
  void hiddenChanged(const QSet<playerx::window::FilmId>& films);

  /// The time to undo is over, or the removal was undone.
  void settled();

 private:
  void announce();

  WindowQueue& queue_;
  QTimer timer_;
  QList<FilmId> films_;
  QList<FilmId> stopped_;  // of films_, those that the removal has stopped
  QSet<FilmId> leaving_;   // handed to the queue, perhaps still in it
  bool withFiles_ = false;
};

}  // namespace playerx::window
