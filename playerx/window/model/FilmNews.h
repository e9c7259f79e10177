#pragma once

#include <QHash>
#include <QObject>

#include "playerx/window/model/Film.h"

namespace playerx::window {

class FilmModel;

/// Tells what happens to films, once each: not what they are when they are first seen. Used on the
/// UI thread.
class FilmNews : public QObject {
  Q_OBJECT

 public:
  /// `films` is not owned and outlives this.
  explicit FilmNews(const FilmModel& films, QObject* parent = nullptr);

 Q_SIGNALS:
  void done(const playerx::window::Film& film);

  /// A film has failed, and the reason is known.
  void failed(const playerx::window::Film& film);

  /// Enough of a film has arrived to be watched.
  void becamePlayable(const playerx::window::Film& film);

  /// The state is another one, or the next quarter of the film is there.
  void advanced(const playerx::window::Film& film);

 private:
  struct Seen {
    FilmState state = FilmState::kWaiting;
    int quarter = 0;
    bool isPlayable = false;
    bool isExplained = false;
  };

  static Seen seen(const Film& film);
  void onInserted(int first, int last);
  void onChanged(int first, int last);
  void compare(const Film& film, const Seen& before, const Seen& now);

  const FilmModel& films_;
  QHash<FilmId, Seen> seen_;
};

}  // namespace playerx::window
