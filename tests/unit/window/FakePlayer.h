#pragma once

#include <QWidget>

#include "playerx/window/playback/FilmPlayer.h"

namespace playerx::window {

/// A player that shows nothing and writes down what it is asked to do; the test says where playback
/// stands.
class FakePlayer : public FilmPlayer {
 public:
  FakePlayer() : picture_(new QWidget) {}

  QWidget* picture() override { return picture_; }
  void open(const FilmSource& source) override {
    source_ = source;
    calls_ << QStringLiteral("open ") + (source.file.isEmpty() ? source.address : source.file);
    PlaybackState state;
    state.isOpen = true;
    show(state);
  }
  void close() override {
    calls_ << QStringLiteral("close");
    show({});
  }
  void setPaused(bool isPaused) override {
    calls_ << (isPaused ? QStringLiteral("pause") : QStringLiteral("go on"));
  }
  void seek(double seconds) override { calls_ << QStringLiteral("seek %1").arg(seconds); }
  void setVolume(int percent) override { calls_ << QStringLiteral("volume %1").arg(percent); }
  void setMuted(bool isMuted) override {
    calls_ << (isMuted ? QStringLiteral("mute") : QStringLiteral("unmute"));
  }
  void chooseSound(int id) override { calls_ << QStringLiteral("sound %1").arg(id); }
  void chooseSubtitle(int id) override { calls_ << QStringLiteral("subtitle %1").arg(id); }
  void filmGrew() override { calls_ << QStringLiteral("grew"); }
  void filmEnded() override { calls_ << QStringLiteral("ended"); }
  const PlaybackState& state() const override { return state_; }

  /// Has playback stand like this.
  void show(const PlaybackState& state) {
    state_ = state;
    Q_EMIT changed();
  }

  const FilmSource& source() const { return source_; }

  /// What was asked for since the last call.
  QStringList take() { return std::exchange(calls_, {}); }

 private:
  QWidget* const picture_;  // taken by the page that shows it
  FilmSource source_;
  PlaybackState state_;
  QStringList calls_;
};

/// A film of 100 seconds that plays.
inline PlaybackState playing(double position = 10) {
  PlaybackState state;
  state.isOpen = true;
  state.isLoaded = true;
  state.hasPicture = true;
  state.position = position;
  state.duration = 100;
  return state;
}

}  // namespace playerx::window
