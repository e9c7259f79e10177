#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <optional>

#include "playerx/window/model/Film.h"

class QWidget;

namespace playerx::window {

/// What is to be played.
struct FilmSource {
  FilmId film = 0;
  QString title;
  QString file;             ///< of the film, or of the part of it that has arrived; else empty
  QString address;          ///< to fetch from when there is no file
  quint64 total = 0;        ///< bytes of the whole film; 0 when not known
  bool isComplete = false;  ///< the file is the whole film
  double startAt = 0;       ///< seconds
};

/// A choice of sound or subtitles in a film.
struct Track {
  int id = 0;
  QString title;

  bool operator==(const Track&) const = default;
};

/// Where playback stands.
struct PlaybackState {
  bool isOpen = false;     ///< a film was opened and not closed
  bool isLoaded = false;   ///< its beginning was understood
  bool isPaused = false;   ///< by the user
  bool isWaiting = false;  ///< for bytes that have not arrived
  bool hasEnded = false;
  bool hasPicture = false;
  double position = 0;             ///< seconds
  std::optional<double> duration;  ///< seconds; nullopt while unknown
  double arrived = 1;              ///< part of the film that can be shown, 0..1
  int volume = 100;                ///< 0..100
  bool isMuted = false;
  QList<Track> sounds;
  QList<Track> subtitles;
  int sound = 0;     ///< id of the one that is heard; 0 for none
  int subtitle = 0;  ///< id of the one that is shown; 0 for none
  QString problem;   ///< why nothing is shown, one sentence; empty when all is well

  bool operator==(const PlaybackState&) const = default;
};

/// Plays one film at a time into a widget. Used on the UI thread; nothing here waits.
class FilmPlayer : public QObject {
  Q_OBJECT

 public:
  using QObject::QObject;

  /// The widget that shows the picture; belongs to the player until a parent is given.
  virtual QWidget* picture() = 0;

  /// Ends what is played and plays this as soon as it can.
  virtual void open(const FilmSource& source) = 0;
  virtual void close() = 0;

  virtual void setPaused(bool isPaused) = 0;

  /// Goes to a place in the film, in seconds, no further than has arrived.
  virtual void seek(double seconds) = 0;

  virtual void setVolume(int percent) = 0;
  virtual void setMuted(bool isMuted) = 0;

  /// Chooses one of the state's tracks; 0 for none.
  virtual void chooseSound(int id) = 0;
  virtual void chooseSubtitle(int id) = 0;

  /// Bytes of the film may have arrived; nothing more will arrive.
  virtual void filmGrew() = 0;
  virtual void filmEnded() = 0;

  virtual const PlaybackState& state() const = 0;

 Q_SIGNALS:
  void changed();
};

/// The player that this build has; null when it was built without one.
FilmPlayer* makeFilmPlayer(QObject* parent);

}  // namespace playerx::window
