#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QTimer>

#include "playerx/window/model/Film.h"

namespace playerx::window {

/// Lets the bars of running films grow smoothly towards what has arrived. Used on the UI thread.
class BarGrowth : public QObject {
  Q_OBJECT

 public:
  explicit BarGrowth(QObject* parent = nullptr);

  /// 0 turns the motion off.
  void setDuration(int milliseconds) { duration_ = milliseconds; }

  /// What the bar of the film shows now, 0..1, on its way to what has arrived. A film that was not
  /// asked for before, and one that has lost bytes, is shown as it is.
  double shown(const Film& film);

 Q_SIGNALS:
  /// The bars of these films have to be drawn again.
  void grew(const QList<playerx::window::FilmId>& films);

 private:
  struct Growth {
    double from = 0;
    double to = 0;
    qint64 start = 0;
  };

  double valueOf(const Growth& growth) const;
  void step();

  int duration_ = 250;
  QElapsedTimer clock_;
  QTimer frames_;
  QHash<FilmId, Growth> growths_;
};

/// The part of the film that has arrived, 0..1.
double arrivedPart(const Film& film);

}  // namespace playerx::window
