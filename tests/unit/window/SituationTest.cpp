#include <gtest/gtest.h>

#include "playerx/window/actions/Situation.h"
#include "tests/unit/window/Films.h"

namespace playerx::window {
namespace {

/// A situation in which these films are selected, and are the whole queue.
Situation selecting(const QList<Film>& films) {
  Situation now;
  for (const Film& each : films) {
    now.queue.add(each);
    now.selected.add(each);
  }
  return now;
}

bool isPossible(Verb verb, const Situation& now) { return obstacleTo(verb, now).isEmpty(); }

TEST(SituationTest, NothingCanBeDoneWithFilmsWhenNoneIsSelected) {
  const Situation now;
  for (const Verb verb : {Verb::kPlay, Verb::kStop, Verb::kGoOn, Verb::kRetry, Verb::kShowInFolder,
                          Verb::kCopyAddress, Verb::kRemove, Verb::kMoveUp, Verb::kMoveToBottom}) {
    EXPECT_EQ(obstacleTo(verb, now), QStringLiteral("Choose a film first."));
  }
}

TEST(SituationTest, WhatAlwaysWorksIsNeverGrey) {
  for (const Verb verb : {Verb::kAddAddresses, Verb::kAddTickets, Verb::kFilter, Verb::kPreferences,
                          Verb::kAbout, Verb::kQuit, Verb::kFullScreen}) {
    EXPECT_TRUE(isPossible(verb, {}));
  }
}

TEST(SituationTest, EachStateAllowsWhatFitsIt) {
  struct Case {
    Film film;
    QList<Verb> possible;
  };
  const QList<Verb> asked = {Verb::kPlay,  Verb::kStop,         Verb::kGoOn,
                             Verb::kRetry, Verb::kShowInFolder, Verb::kMoveUp};
  const QList<Case> cases = {
      {film(1), {Verb::kStop, Verb::kMoveUp}},
      {arriving(1, 3), {Verb::kStop, Verb::kMoveUp}},
      {arriving(1, 5), {Verb::kPlay, Verb::kStop, Verb::kMoveUp}},
      {film(1, FilmState::kStopped), {Verb::kGoOn, Verb::kMoveUp}},
      {film(1, FilmState::kFailed), {Verb::kRetry}},
      {film(1, FilmState::kDone), {Verb::kPlay, Verb::kShowInFolder}},
  };
  for (const Case& each : cases) {
    QList<Verb> possible;
    for (const Verb verb : asked) {
      if (isPossible(verb, selecting({each.film}))) possible << verb;
    }
    EXPECT_EQ(possible, each.possible) << "state " << static_cast<int>(each.film.state);
  }
}

TEST(SituationTest, OnlyOneFilmCanBePlayedAtATime) {
  const Film done = film(1, FilmState::kDone);
  EXPECT_FALSE(isPossible(Verb::kPlay, selecting({done, done})));
}

TEST(SituationTest, TheQueueIsPausedOrGoesOn) {
  Situation now = selecting({film(1)});
  EXPECT_TRUE(isPossible(Verb::kPauseAll, now));
  EXPECT_FALSE(isPossible(Verb::kResumeAll, now));
  now.isPaused = true;
  EXPECT_FALSE(isPossible(Verb::kPauseAll, now));
  EXPECT_TRUE(isPossible(Verb::kResumeAll, now));
}

TEST(SituationTest, AFilmAtTheEndMovesNoFurther) {
  Situation now = selecting({film(1)});
  now.isAtTop = true;
  EXPECT_FALSE(isPossible(Verb::kMoveUp, now));
  EXPECT_FALSE(isPossible(Verb::kMoveToTop, now));
  EXPECT_TRUE(isPossible(Verb::kMoveDown, now));
  now.isFiltered = true;
  EXPECT_FALSE(isPossible(Verb::kMoveDown, now));
}

}  // namespace
}  // namespace playerx::window
