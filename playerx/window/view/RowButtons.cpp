#include "playerx/window/view/RowButtons.h"

namespace playerx::window {

namespace {

bool isForAnotherFolder(const FilmFailure& failure) {
  return failure.code == QLatin1String("no_space") || failure.code == QLatin1String("media_folder");
}

}  // namespace

QList<Verb> rowButtonsOf(const Film& film) {
  QList<Verb> verbs;
  if (canBePlayed(film)) verbs << Verb::kPlay;
  switch (film.state) {
    case FilmState::kDone:
      return verbs << Verb::kShowInFolder;
    case FilmState::kFailed:
      verbs << Verb::kRetry;
      return verbs << (isForAnotherFolder(film.failure) ? Verb::kOtherFolder : Verb::kCopyAddress);
    case FilmState::kStopped:
      return verbs << Verb::kGoOn;
    case FilmState::kPaused:
      return verbs << Verb::kResumeAll;
    default:
      return verbs << Verb::kStop;
  }
}

bool showsButtonsAlways(const Film& film) { return film.state == FilmState::kFailed; }

}  // namespace playerx::window
