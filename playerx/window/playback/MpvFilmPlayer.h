#pragma once

#include <mpv/client.h>

#include <QTimer>
#include <memory>

#include "playerx/window/playback/FilmPlayer.h"
#include "playerx/window/playback/FilmStreams.h"

namespace playerx::window {

class VideoSurface;

/// Plays films with libmpv, those that are still arriving from the part that is there: a read
/// behind it waits until the bytes have come.
class MpvFilmPlayer : public FilmPlayer {
  Q_OBJECT

 public:
  explicit MpvFilmPlayer(QObject* parent);
  ~MpvFilmPlayer() override;

  /// Whether libmpv could be started.
  bool isUsable() const { return mpv_ != nullptr; }

  QWidget* picture() override;
  void open(const FilmSource& source) override;
  void close() override;
  void setPaused(bool isPaused) override;
  void seek(double seconds) override;
  void setVolume(int percent) override;
  void setMuted(bool isMuted) override;
  void chooseSound(int id) override;
  void chooseSubtitle(int id) override;
  void filmGrew() override;
  void filmEnded() override;
  const PlaybackState& state() const override { return state_; }

 private:
  void startMpv();
  void load();
  void takeEvents();
  void take(const mpv_event& event);
  void takeProperty(const mpv_event_property& property);
  void takeEnd(const mpv_event_end_file& end);
  void set(const char* property, const QString& value);
  void run(const QStringList& command);
  void update(const PlaybackState& state);
  double arrivedPart() const;

  FilmStreams streams_;  // outlives mpv_
  mpv_handle* mpv_ = nullptr;
  VideoSurface* surface_ = nullptr;  // frees its render context before mpv_ ends
  FilmSource source_;
  std::shared_ptr<GrowingFile> file_;
  PlaybackState state_;
  double cachedUntil_ = 0;  ///< seconds of the film that libmpv has read
  bool wantsLoad_ = false;  ///< as soon as the surface can show something
  QTimer slowStart_;
};

}  // namespace playerx::window
