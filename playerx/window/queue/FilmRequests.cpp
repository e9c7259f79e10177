#include "playerx/window/queue/FilmRequests.h"

namespace playerx::window {

using session::Request;
using Action = Request::Action;
using Direction = Request::Direction;

namespace {

QList<FilmId> backwards(const QList<FilmId>& ids) { return {ids.crbegin(), ids.crend()}; }

}  // namespace

FilmRequests::Requests FilmRequests::stop(const Ids& ids) const {
  return forEach(ids, {.action = Action::kPause});
}

FilmRequests::Requests FilmRequests::goOn(const Ids& ids) const {
  return forEach(ids, {.action = Action::kResume});
}

// Each goes to the top, so the last one is asked for first. All of several are one request,
// which queues each in its place: so many moves would take too long.
FilmRequests::Requests FilmRequests::retry(const Ids& ids) const {
  if (ids.size() > 1 && ids.size() == failed_) return {{.action = Action::kRetry}};
  return forEach(backwards(ids), {.action = Action::kRetry});
}

FilmRequests::Requests FilmRequests::remove(const Ids& ids, bool withFiles) const {
  return forEach(ids, {.action = Action::kRemove, .withFilm = withFiles});
}

FilmRequests::Requests FilmRequests::move(const Ids& ids, Move where) const {
  static constexpr Direction kDirections[] = {Direction::kUp, Direction::kDown, Direction::kTop,
                                              Direction::kBottom};
  const bool isForward = where == Move::kUp || where == Move::kToBottom;
  return forEach(isForward ? ids : backwards(ids),
                 {.action = Action::kMove, .direction = kDirections[static_cast<int>(where)]});
}

FilmRequests::Requests FilmRequests::moveBefore(const Ids& ids, FilmId before) const {
  if (before == 0) return move(ids, Move::kToBottom);
  if (ids.contains(before) || before <= firstId_) return {};
  return forEach(
      ids, {.action = Action::kMove, .direction = Direction::kBefore, .before = before - firstId_});
}

FilmRequests::Requests FilmRequests::forEach(const Ids& ids, Request request) const {
  Requests requests;
  for (const FilmId film : ids) {
    if (film <= firstId_) continue;
    request.id = film - firstId_;
    requests.push_back(request);
  }
  return requests;
}

}  // namespace playerx::window
