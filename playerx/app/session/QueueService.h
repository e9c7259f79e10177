#pragma once

#include <functional>
#include <string>
#include <vector>

#include "playerx/app/session/FilmAdder.h"
#include "playerx/app/session/Leftovers.h"
#include "playerx/app/session/PlayerSession.h"
#include "playerx/app/session/QueueRequest.h"
#include "playerx/app/session/QueueWatch.h"
#include "playerx/app/session/StoppedItems.h"

namespace playerx::session {

/// Said of a limit of the rate where nothing is being downloaded.
inline constexpr char kLimitsNothing[] =
    "Nothing is being downloaded, so the limit of the rate has no effect; `get --limit-rate` "
    "limits what it downloads.";

/// The queue as every face uses it, in this process or at the other end of a socket: carries
/// requests out and tells what happens. On the session's thread.
///
///     QueueService service(session, keep, wake, probe, listener);
///     session.start();                             // when films are to be downloaded
///     Reply reply = service.handle({.action = Request::Action::kAdd, .inputs = {address}});
///     ... service.update() when woken, service.watch().measure() twice a second
class QueueService {
 public:
  /// The session is open for changes, and outlives the service. The other arguments are those of
  /// `QueueWatch`.
  QueueService(PlayerSession& session, model::QueueTracker::Keep keep, std::function<void()> wake,
               reasons::Probe probe, QueueWatch::Listener listener);

  /// Carries a request out. The listener may be called meanwhile. Tickets may have to wait for the
  /// online services.
  Reply handle(const Request& request);

  /// Why the queue file lacks what was changed, in one sentence; empty when it holds everything.
  std::string saveProblem() { return session_.saveProblem(); }

  QueueWatch& watch() { return watch_; }
  const QueueWatch& watch() const { return watch_; }

  /// How far the queue has come that `watch` has last seen.
  model::QueueProgress progress() const;

  /// Deletes what was left of films that are not in the queue, as far as no transfer is at work on
  /// it: the rest goes with a later `update`. Nothing is deleted while an unreadable queue lies set
  /// aside, whose films these may be.
  void deleteLeftovers();

  /// Whether something was removed of which bytes may lie there still: a transfer that was stopped
  /// gives its files back a moment later.
  bool mayHaveLeftovers() const { return mayHaveLeftovers_; }

  /// Tells what is new, and deletes what can be deleted now. To be called when the session or the
  /// service wakes its face.
  void update();

 private:
  Reply list();
  Reply editAll(const Request& request);
  Reply pauseAll();
  Reply clear();
  Reply editItem(const Request& request, const model::ItemState& item);
  Reply remove(const model::ItemState& item, bool withFilm);
  Reply retry(const model::ItemState& item);
  Reply retryAll();
  Reply move(const model::ItemState& item, Request::Direction direction);
  Reply moveBefore(const model::ItemState& item, unsigned int before);
  Reply tellPlace(const model::ItemState& item);
  Reply pause(const model::ItemState& item);
  Reply resume(const model::ItemState& item);
  Reply resumeAll();
  Reply clean(bool dryRun);
  std::vector<Leftover> leftovers() const;

  PlayerSession& session_;
  StoppedItems stopped_;
  QueueWatch watch_;
  FilmAdder adder_;
  bool mayHaveLeftovers_ = false;
};

}  // namespace playerx::session
