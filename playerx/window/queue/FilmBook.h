#pragma once

#include <QHash>
#include <functional>
#include <optional>
#include <vector>

#include "playerx/app/session/QueueRequest.h"
#include "playerx/window/model/QueueUpdate.h"

namespace playerx::window {

/// Turns the queue, and what happens to it, into updates for the window. Used on one thread.
class FilmBook {
 public:
  /// Why an item failed in an earlier run; nullopt when that is not known.
  using FindReason = std::function<std::optional<reasons::Explanation>(const model::ItemState&)>;

  /// The film of an item is numbered with the item's id plus `firstId`.
  FilmBook(FindReason findReason, FilmId firstId)
      : findReason_(std::move(findReason)), firstId_(firstId), lastId_(firstId) {}

  FilmId firstId() const { return firstId_; }

  /// The highest number that a film has had; `firstId` before the first film.
  FilmId lastId() const { return lastId_; }

  /// The film of the event; 0 for an event that concerns no film.
  FilmId filmOf(const session::QueueEvent& event) const;

  /// Keeps progress and reason for the next update.
  void note(const session::QueueEvent& event);

  /// What is different from the queue at the last call, all of it at the first one; nullopt when
  /// nothing is.
  std::optional<QueueUpdate> update(const std::vector<model::ItemState>& queue, bool isPaused);

 private:
  struct Page {
    model::ItemState item;  ///< as it was told last
    Film film;
    model::Progress progress;
    FilmFailure failure;
    bool isOld = true;  ///< there is news since
  };

  void forgetOthers(const QList<FilmId>& order);
  Film filmOf(const model::ItemState& item, Page& page) const;

  const FindReason findReason_;
  const FilmId firstId_;
  FilmId lastId_;
  QHash<FilmId, Page> pages_;
  std::optional<QList<FilmId>> order_;  ///< nullopt before the first update
  bool isPaused_ = false;
};

}  // namespace playerx::window
