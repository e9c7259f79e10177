#pragma once

#include <QWidget>

#include "playerx/window/playback/FilmPlayer.h"

class QLabel;
class QToolButton;

namespace playerx::window {

/// The film that plays while the list of downloads is shown: its title and place, pause, back to
/// the picture, close. Hidden while nothing plays.
class MiniPlayer : public QWidget {
  Q_OBJECT

 public:
  /// `player` is not owned and outlives this; null shows nothing, ever.
  explicit MiniPlayer(FilmPlayer* player, QWidget* parent = nullptr);

  void setTitle(const QString& title);

  /// Whether it may be seen: not beside the picture.
  void setShown(bool isShown);

 Q_SIGNALS:
  void pictureWanted();

 private:
  QToolButton* makeButton(const QString& icon, const QString& name);
  void follow();

  FilmPlayer* const player_;
  QToolButton* const pause_;
  QLabel* const title_;
  QLabel* const time_;
  bool isShown_ = true;
};

}  // namespace playerx::window
