#pragma once

#include <vector>

#include "playerx/app/session/QueueRequest.h"
#include "playerx/window/queue/WindowQueue.h"

namespace playerx::window {

/// What a queue is asked to do with films: one request for each, in the order in which they are to
/// be made. Films of an earlier queue are left out.
class FilmRequests {
 public:
  using Ids = QList<FilmId>;
  using Requests = std::vector<session::Request>;

  /// The queue's items are the films numbered from above `firstId` on; `failed` of them have
  /// failed.
  explicit FilmRequests(FilmId firstId, qsizetype failed = 0)
      : firstId_(firstId), failed_(failed) {}

  Requests stop(const Ids& ids) const;
  Requests goOn(const Ids& ids) const;
  Requests retry(const Ids& ids) const;
  Requests remove(const Ids& ids, bool withFiles) const;
  Requests move(const Ids& ids, Move where) const;

  /// In front of the film `before`; to the end when that is 0.
  Requests moveBefore(const Ids& ids, FilmId before) const;

 private:
  Requests forEach(const Ids& ids, session::Request request) const;

  const FilmId firstId_;
  const qsizetype failed_;
};

}  // namespace playerx::window
