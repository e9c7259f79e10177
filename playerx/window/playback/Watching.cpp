#include "playerx/window/playback/Watching.h"

#include <QDesktopServices>
#include <QUrl>
#include <cmath>

#include "playerx/window/model/FilmModel.h"
#include "playerx/window/model/FilmText.h"
#include "playerx/window/model/WindowMemory.h"

namespace playerx::window {

namespace {

/// A film that was left so shortly before its end begins anew, in seconds.
constexpr double kAlmostOver = 10;

/// Places are remembered in steps of so many seconds.
constexpr double kPlaceStep = 5;

QString keyOf(const FilmSource& source) {
  return source.address.isEmpty() ? source.file : source.address;
}

}  // namespace

std::optional<FilmSource> sourceOf(const Film& film) {
  if (!canBePlayed(film)) return std::nullopt;
  FilmSource source;
  source.film = film.id;
  source.title = displayTitle(film);
  source.address = film.address;
  source.total = film.size;
  source.isComplete = film.state == FilmState::kDone;
  source.file = source.isComplete ? film.path : film.partialPath;
  return source;
}

Watching::Watching(FilmModel& films, FilmPlayer* player, WindowMemory& memory, QObject* parent)
    : QObject(parent), films_(films), player_(player), memory_(memory) {
  connect(&films_, &FilmModel::dataChanged, this, &Watching::followFilm);
  connect(&films_, &FilmModel::rowsRemoved, this, &Watching::followFilm);
  if (player_ != nullptr) connect(player_, &FilmPlayer::changed, this, &Watching::rememberPlace);
}

bool Watching::play(FilmId id) {
  const Film* const film = films_.film(id);
  const std::optional<FilmSource> source = film != nullptr ? sourceOf(*film) : std::nullopt;
  if (source) start(*source);
  return source.has_value();
}

void Watching::play(const QString& location) {
  if (const Film* const film = filmAtPlace(location)) {
    if (play(film->id)) return;
  }
  FilmSource source;
  source.title = location.section(QLatin1Char('/'), -1);
  const bool isAddress = location.contains(QLatin1String("://"));
  (isAddress ? source.address : source.file) = location;
  source.isComplete = true;
  start(source);
}

void Watching::playAlone(const Film& film) {
  const bool isIdle = player_ != nullptr && !player_->state().isOpen;
  if (isIdle && memory_.preferences().playsAutomatically) play(film.id);
}

void Watching::openWithDesktop() const {
  const bool isLocal = !source_.file.isEmpty();
  QDesktopServices::openUrl(isLocal ? QUrl::fromLocalFile(source_.file) : QUrl(source_.address));
}

void Watching::start(const FilmSource& source) {
  source_ = source;
  source_.startAt = memory_.placeIn(keyOf(source));
  if (player_ != nullptr) player_->open(source_);
  Q_EMIT started(source_);
}

void Watching::followFilm() {
  if (player_ == nullptr || source_.film == 0 || source_.isComplete) return;
  const Film* const film = films_.film(source_.film);
  const bool isOver = film == nullptr || !isUnfinished(film->state);
  if (film != nullptr && film->state == FilmState::kDone) source_.isComplete = true;
  if (isOver) {
    player_->filmEnded();
  } else {
    player_->filmGrew();
  }
}

void Watching::rememberPlace() {
  const PlaybackState& state = player_->state();
  if (!state.isLoaded || !state.duration) return;
  const bool isOver = state.hasEnded || state.position > *state.duration - kAlmostOver;
  memory_.keepPlace(keyOf(source_),
                    isOver ? 0 : std::floor(state.position / kPlaceStep) * kPlaceStep);
}

const Film* Watching::filmAtPlace(const QString& location) const {
  for (const Film& film : films_.films()) {
    if (film.path == location || film.address == location) return &film;
  }
  return nullptr;
}

}  // namespace playerx::window
