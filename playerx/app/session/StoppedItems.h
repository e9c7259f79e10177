#pragma once

#include <functional>
#include <vector>

#include "playerx/app/model/ItemState.h"
#include "playerx/app/session/PlayerSession.h"
#include "playerx/app/session/QueueRequest.h"

namespace playerx::session {

/// The items that wait until they are resumed. The manager knows no paused item but the first one;
/// a stopped item is passed over in the same way, so these are stopped. It queues a stopped one,
/// though, when another takes its place at the top.
///
/// Used on the session's thread. `queue` is the queue as it was last seen.
class StoppedItems {
 public:
  using Queue = std::vector<model::ItemState>;

  /// The session outlives it.
  explicit StoppedItems(PlayerSession& session) : session_(session) {}

  /// Keeps stopped what an earlier run has stopped.
  void adopt(const Queue& queue);

  /// Has an item wait, from now on and whatever the manager makes of it, until it is let go.
  void stop(const model::ItemState& item, const Queue& queue);
  void letGo(unsigned int id);
  void letAllGo(const Queue& queue);

  /// Stops those again that the manager has queued and taken up meanwhile.
  void stopAgain(const Queue& queue);

  /// Whether an event is about the moment before `stopAgain`.
  bool isBeforeStop(const QueueEvent& event) const;

 private:
  PlayerSession& session_;
};

/// Ends the transfer of an item before a change of it: the manager would carry it on, with the
/// queue waiting behind it.
void whileStopped(PlayerSession& session, const StoppedItems::Queue& queue,
                  const model::ItemState& item, const std::function<void()>& change);

}  // namespace playerx::session
