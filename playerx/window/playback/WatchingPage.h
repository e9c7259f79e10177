#pragma once

#include <QTimer>
#include <QWidget>

#include "playerx/window/playback/FilmPlayer.h"

class QLabel;
class QPushButton;

namespace playerx::window {

class ControlBar;

/// The picture of a film with its controls, which hide while nothing moves. Used on the UI thread.
class WatchingPage : public QWidget {
  Q_OBJECT

 public:
  static constexpr int kHideMs = 2000;

  /// `player` is null when this build cannot show films; not owned, outlives the page. The
  /// controls hide `hideMs` milliseconds after the last movement.
  explicit WatchingPage(FilmPlayer* player, QWidget* parent = nullptr, int hideMs = kHideMs);

  /// Title and address or path of what is played; for the words on the page.
  void setTitle(const QString& title);

  void setFullScreen(bool isFullScreen);

  /// The words over the picture; empty when the film speaks for itself.
  QString notice() const;

 Q_SIGNALS:
  void fullScreenToggled();
  void backWanted();

  /// The desktop's own player is to show the film.
  void desktopPlayerWanted();

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void connectPlayer();
  void follow();
  void layOut();
  void showControls();
  void hideControls();
  void step(double seconds);
  QString noticeFor(const PlaybackState& state) const;

  FilmPlayer* const player_;
  QWidget* picture_ = nullptr;
  QLabel* const notice_;
  QPushButton* const handOver_;
  ControlBar* const controls_;
  QTimer hide_;
  QString title_;
};

}  // namespace playerx::window
