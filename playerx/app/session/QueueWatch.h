#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "playerx/app/model/Progress.h"
#include "playerx/app/model/QueueTracker.h"
#include "playerx/app/reasons/FailureExplainer.h"
#include "playerx/app/reasons/ReasonFile.h"
#include "playerx/app/session/PlayerSession.h"
#include "playerx/app/session/QueueRequest.h"

namespace playerx::session {

/// Looks at the queue of a session and tells a listener what has happened since the last look, with
/// progress, reasons and oddities, and keeps the reasons for later runs. On the session's thread;
/// the listener is called within `update`, `measure`, `clearTopFor` and `playWhenReady` alone.
class QueueWatch {
 public:
  using Listener = std::function<void(const QueueEvent&)>;

  /// The session is open and outlives the watch: changes are told against the queue as it is now.
  /// `wake` is called on any thread when an update is due, and must not wait.
  QueueWatch(PlayerSession& session, model::QueueTracker::Keep keep, std::function<void()> wake,
             reasons::Probe probe, Listener listener);
  QueueWatch(const QueueWatch&) = delete;
  QueueWatch& operator=(const QueueWatch&) = delete;
  ~QueueWatch();

  /// Tells what is new. To be called when the session or the watch wakes its face. Returns the ids
  /// of the items that are seen for the first time, in the queue's order.
  std::vector<unsigned int> update();

  /// Tells the present progress of what arrives. To be called from time to time.
  void measure();

  /// Has the next failure of an item told that had failed already, and was given another try.
  void expectOutcome(unsigned int id);

  /// Takes failed items from the top of the queue to its end, unless this one is above them. The
  /// manager queues an item at the top when another one goes before it, a failed one too.
  void clearTopFor(unsigned int id);

  /// Queues a failed item in its place and expects its outcome. The manager's own retry takes it to
  /// the top, one saved step after the other; those of all items of a long queue are millions.
  void queueAgain(unsigned int id);

  /// Progress of the items that arrive, as it was told last, by id.
  std::map<unsigned int, model::Progress> progress() const;

  /// The queue as `update` has last seen it.
  const model::QueueTracker& queue() const { return tracker_; }

  /// Whether nothing is left to download and every failure has been told.
  bool isIdle() const;

  /// Has an item played as soon as enough of it is there.
  void playWhenReady(unsigned int id);

 private:
  bool isArriving(const model::ItemState& item) const;
  void tellMessages();
  std::vector<unsigned int> tellChanges();
  void tellRemoved(const model::ItemState& item);
  void tellFinished(model::ItemState item);
  void tellReasons();
  void saveReasons();
  void tell(const model::QueueChange& change);
  std::optional<model::Progress> measure(const model::ItemState& item);
  const model::ItemState* askedItem() const;
  std::optional<model::Progress> measureSilence(const model::ItemState& item);
  void playIfReady(const model::ItemState& item);
  void note(const std::string& sentence);

  PlayerSession& session_;
  const Listener listener_;
  reasons::FailureExplainer explainer_;
  reasons::ReasonFile reasons_;
  bool hasNewReasons_ = false;  // which the file does not hold yet
  std::chrono::steady_clock::time_point nextSave_{};

  model::QueueTracker tracker_;
  std::map<unsigned int, model::ProgressMeter> meters_;
  unsigned int asked_ = 0;  ///< the item whose server was being asked when last looked
  model::ProgressMeter::Clock::time_point askedSince_{};
  std::set<unsigned int> toPlay_;
  std::string lastWords_;  ///< said since the last outcome
};

}  // namespace playerx::session
