#pragma once

#include <QWidget>

#include "playerx/window/playback/FilmPlayer.h"

class QLabel;
class QMenu;
class QSlider;
class QToolButton;

namespace playerx::window {

class SeekBar;

/// Play and pause, the place in the film, sound, subtitles, full screen. Shows a playback state and
/// tells what the user wants.
class ControlBar : public QWidget {
  Q_OBJECT

 public:
  explicit ControlBar(QWidget* parent = nullptr);

  void show(const PlaybackState& state);
  void setFullScreen(bool isFullScreen);

 Q_SIGNALS:
  void listWanted();
  void pauseToggled();
  void seekWanted(double seconds);
  void volumeWanted(int percent);
  void muteToggled();
  void soundChosen(int id);
  void subtitleChosen(int id);
  void fullScreenToggled();

 protected:
  void changeEvent(QEvent* event) override;

 private:
  QToolButton* makeButton(const QString& drawing, const QString& name);
  void arrange();
  void connectParts();
  void fillTracks(QMenu& menu, const QList<Track>& tracks, int chosen, bool canBeOff,
                  void (ControlBar::*signal)(int));
  void setLook();

  QToolButton* const list_;
  QToolButton* const play_;
  SeekBar* const seek_;
  QLabel* const time_;
  QToolButton* const mute_;
  QSlider* const volume_;
  QToolButton* const sounds_;
  QToolButton* const subtitles_;
  QToolButton* const fullScreen_;
  PlaybackState state_;
};

/// "12:34 of 1:30:00"; the place alone while the length is unknown.
QString timeText(const PlaybackState& state);

}  // namespace playerx::window
