#pragma once

#include <QDateTime>
#include <QMetaType>
#include <QString>
#include <optional>

namespace playerx::window {

/// Names a film within this run of the player.
using FilmId = unsigned int;

/// Where a film stands, as people see it.
enum class FilmState {
  kWaiting,
  kConnecting,
  kDownloading,
  kPaused,
  kDone,
  kFailed,
  kStopped,
  kHeld,
};

/// Why a film failed.
struct FilmFailure {
  QString code;      ///< stable word; empty when nothing failed
  QString sentence;  ///< what happened, then what can be done

  bool operator==(const FilmFailure&) const = default;
};

/// One row of the queue: a value that belongs to its holder alone.
struct Film {
  FilmId id = 0;
  QString title;
  QString provider;
  QString address;
  QString path;         ///< where the finished film is, or will be; empty until chosen
  QString partialPath;  ///< the file that its bytes are written to now; empty for none
  FilmState state = FilmState::kWaiting;
  int percent = 0;                     ///< 0..100
  quint64 size = 0;                    ///< bytes; 0 until known
  quint64 arrived = 0;                 ///< bytes
  quint64 bytesPerSecond = 0;          ///< 0 when nothing arrives
  std::optional<quint64> secondsLeft;  ///< nullopt while unknown
  bool isPlayable = false;             ///< playback may begin before the film is complete
  FilmFailure failure;                 ///< empty unless the film failed
  QDateTime finishedAt;                ///< invalid unless the film is complete

  bool operator==(const Film&) const = default;
};

/// Whether bytes of the film arrive, or are just about to.
bool isRunning(FilmState state);

/// Whether the queue still has work to do for the film.
bool isUnfinished(FilmState state);

/// Whether the player can show the film now: complete, or far enough.
bool canBePlayed(const Film& film);

}  // namespace playerx::window

Q_DECLARE_METATYPE(playerx::window::Film)
