#pragma once

#include <QObject>

#include "playerx/window/playback/FilmPlayer.h"

namespace playerx::window {

class FilmModel;
class WindowMemory;

/// Decides how a film is played, and follows it while it arrives: from its file, or from the part
/// of it that is there; from its address only when nothing of it is arriving here. Used on the UI
/// thread; the arguments are not owned and outlive this.
class Watching : public QObject {
  Q_OBJECT

 public:
  Watching(FilmModel& films, FilmPlayer* player, WindowMemory& memory, QObject* parent = nullptr);

  /// Plays a film of the queue; false when too little of it is there.
  bool play(FilmId id);

  /// Plays a path or an address.
  void play(const QString& location);

  /// Plays a film that has become playable, when the user wants that and nothing else is played.
  void playAlone(const Film& film);

  /// Hands over what is played to the desktop's own player.
  void openWithDesktop() const;

  /// The film that is played; 0 for none of the queue.
  FilmId film() const { return source_.film; }
  const FilmSource& source() const { return source_; }

 Q_SIGNALS:
  /// Something else is played.
  void started(const playerx::window::FilmSource& source);

 private:
  void start(const FilmSource& source);
  void followFilm();
  void rememberPlace();
  const Film* filmAtPlace(const QString& location) const;

  FilmModel& films_;
  FilmPlayer* const player_;
  WindowMemory& memory_;
  FilmSource source_;
};

/// How to play this film; nullopt when too little of it is there.
std::optional<FilmSource> sourceOf(const Film& film);

}  // namespace playerx::window
