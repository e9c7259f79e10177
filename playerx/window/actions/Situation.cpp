#include "playerx/window/actions/Situation.h"

#include <QCoreApplication>

namespace playerx::window {

namespace {

struct Obstacle {
  Q_DECLARE_TR_FUNCTIONS(playerx::window::Obstacle)
};

QString unless(bool isPossible, const QString& sentence) {
  return isPossible ? QString() : sentence;
}

/// For verbs that need a selected film of some kind.
QString unlessSelected(const FilmCounts& selected, int suitable, const QString& sentence) {
  if (selected.all == 0) return Obstacle::tr("Choose a film first.");
  return unless(suitable > 0, sentence);
}

QString obstacleToMove(const Situation& now, bool isAtEnd, const QString& sentence) {
  const QString none = Obstacle::tr("Done and failed films stay at the bottom.");
  const QString unsuitable = unlessSelected(now.selected, now.selected.unfinished, none);
  if (!unsuitable.isEmpty()) return unsuitable;
  if (now.isFiltered) return Obstacle::tr("Films can be moved when the list is not filtered.");
  return unless(!isAtEnd, sentence);
}

}  // namespace

void FilmCounts::add(const Film& film) {
  ++all;
  if (isUnfinished(film.state)) ++unfinished;
  if (isRunning(film.state)) ++running;
  if (film.state == FilmState::kStopped) ++stopped;
  if (film.state == FilmState::kFailed) ++failed;
  if (film.state == FilmState::kDone) ++done;
  if (canBePlayed(film)) ++playable;
  if (!film.address.isEmpty()) ++withAddress;
}

QString obstacleTo(Verb verb, const Situation& now) {
  const FilmCounts& chosen = now.selected;
  switch (verb) {
    case Verb::kPaste:
      return unless(now.clipboardHasInputs,
                    Obstacle::tr("The clipboard holds no address and no ticket."));
    case Verb::kPauseAll:
      if (now.isPaused) return Obstacle::tr("The queue is paused.");
      return unless(now.queue.unfinished > 0, Obstacle::tr("Nothing is left to download."));
    case Verb::kResumeAll:
      return unless(now.isPaused, Obstacle::tr("The queue is not paused."));
    case Verb::kPlay:
      if (chosen.all > 1) return Obstacle::tr("Choose a single film.");
      return unlessSelected(chosen, chosen.playable,
                            Obstacle::tr("Too little of this film has arrived."));
    case Verb::kStop:
      return unlessSelected(chosen, chosen.unfinished - chosen.stopped,
                            Obstacle::tr("No chosen film is waiting or downloading."));
    case Verb::kGoOn:
      return unlessSelected(chosen, chosen.stopped, Obstacle::tr("No chosen film is stopped."));
    case Verb::kRetry:
      return unlessSelected(chosen, chosen.failed, Obstacle::tr("No chosen film has failed."));
    case Verb::kRetryAll:
      return unless(now.queue.failed > 0, Obstacle::tr("No film has failed."));
    case Verb::kShowInFolder:
    case Verb::kRemoveWithFile:
      return unlessSelected(chosen, chosen.done, Obstacle::tr("No chosen film is done."));
    case Verb::kCopyAddress:
      return unlessSelected(chosen, chosen.withAddress,
                            Obstacle::tr("The chosen film has no address yet."));
    case Verb::kCopyDetails:
    case Verb::kRemove:
      return unlessSelected(chosen, chosen.all, {});
    case Verb::kClearDone:
      return unless(now.queue.done > 0, Obstacle::tr("No film is done."));
    case Verb::kUndo:
      return unless(now.canUndo, Obstacle::tr("There is nothing to undo."));
    case Verb::kMoveUp:
    case Verb::kMoveToTop:
      return obstacleToMove(now, now.isAtTop, Obstacle::tr("The film is at the top."));
    case Verb::kMoveDown:
    case Verb::kMoveToBottom:
      return obstacleToMove(now, now.isAtBottom, Obstacle::tr("The film is at the bottom."));
    case Verb::kSelectAll:
      return unless(now.queue.all > 0, Obstacle::tr("The list is empty."));
    default:
      return {};
  }
}

}  // namespace playerx::window
