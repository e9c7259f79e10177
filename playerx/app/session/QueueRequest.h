#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "playerx/app/model/ItemState.h"
#include "playerx/app/model/Progress.h"
#include "playerx/app/reasons/Reason.h"
#include "playerx/transfers/TransferSettings.h"

namespace playerx::session {

/// What a face asks of the queue.
struct Request {
  enum class Action {
    kList,
    kWatch,
    kAdd,
    kRemove,
    kRetry,
    kMove,
    kPause,
    kResume,
    kClear,
    kClean,
    kLimit,
    kShow,
    kPing
  };
  enum class Direction { kUp, kDown, kTop, kBottom, kBefore };

  Action action = Action::kList;

  // Which item; all of them when neither is given.
  std::optional<unsigned int> id{};  ///< goes before the position
  int position = 0;                  ///< from 1 on

  // Adding, and showing the window.
  std::vector<std::string> inputs{};  ///< addresses and paths of tickets, UTF-8
  std::string name{};                 ///< the only film's file name; empty: that of its address
  bool starts = true;                 ///< a paused queue goes on
  bool again = false;                 ///< what is there already is fetched anew
  bool plays = false;                 ///< played as soon as enough of it is there
  FilmOptions options{};              ///< how the films are fetched

  Direction direction = Direction::kUp;  ///< of a move
  unsigned int before = 0;  ///< id of the item that a move to `kBefore` ends in front of
  bool dryRun = false;      ///< what would be cleaned is named and kept
  bool withFilm = false;    ///< what is removed goes with its finished film

  /// Bytes per second for all films from now on, in addition to the action; 0: no limit.
  std::optional<std::uint64_t> rateLimit{};

  bool operator==(const Request&) const = default;
};

/// An input that cannot be downloaded.
struct Refusal {
  std::string input;
  reasons::Explanation reason;

  bool operator==(const Refusal&) const = default;
};

/// What became of a request.
struct Reply {
  enum class Outcome { kDone = 0, kFailed = 1, kWrongUse = 2 };

  Outcome outcome = Outcome::kDone;
  std::vector<std::string> notes{};       ///< sentences for people: why not, or what to know
  std::vector<Refusal> refused{};         ///< inputs
  std::vector<model::ItemState> items{};  ///< the queue, or the items that adding leaves to fetch
  std::set<unsigned int> known{};         ///< ids of those items that were in the queue before
  std::vector<model::ItemState> there{};  ///< films of inputs that were complete before
  std::map<unsigned int, model::Progress> progress{};  ///< of those that arrive, by id
  bool isPaused = false;                               ///< the whole queue; with the queue only
  std::vector<std::string> results{};                  ///< sentences for people on what was done

  bool operator==(const Reply&) const = default;
};

/// One thing that happened to the queue.
struct QueueEvent {
  enum class Kind { kAdded, kChanged, kFinished, kFailed, kRemoved, kMoved, kNote, kQueue };

  Kind kind = Kind::kNote;
  model::ItemState
      item{};  ///< as it is now; of a removed one as it was; empty for kMoved, kNote, kQueue
  model::Progress progress{};     ///< of a change
  std::string sentence{};         ///< the note; what is odd about a finished film, mostly empty
  reasons::Explanation reason{};  ///< of a failure
  model::QueueProgress queue{};   ///< of the whole queue, when it has changed

  bool operator==(const QueueEvent&) const = default;
};

}  // namespace playerx::session
