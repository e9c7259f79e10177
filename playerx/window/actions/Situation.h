#pragma once

#include <QString>

#include "playerx/window/model/Film.h"
#include "playerx/window/model/Verb.h"

namespace playerx::window {

/// Films counted by what can be done with them.
struct FilmCounts {
  int all = 0;
  int unfinished = 0;  ///< those the queue still works on or passes over, stopped ones included
  int stopped = 0;
  int running = 0;
  int failed = 0;
  int done = 0;
  int playable = 0;
  int withAddress = 0;

  void add(const Film& film);
};

/// What decides which verbs make sense now.
struct Situation {
  FilmCounts queue;
  FilmCounts selected;
  bool isPaused = false;  ///< the whole queue
  bool canUndo = false;
  bool isAtTop = false;     ///< nothing selected can move up
  bool isAtBottom = false;  ///< nothing selected can move down
  bool clipboardHasInputs = false;
  bool isFiltered = false;
};

/// Why the verb cannot be done now, one sentence for its tool tip; empty when it can.
QString obstacleTo(Verb verb, const Situation& situation);

}  // namespace playerx::window
