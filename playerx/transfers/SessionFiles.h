#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "playerx/transfers/PartFinder.h"
#include "playerx/transfers/Placement.h"
#include "playerx/transfers/Session.h"
#include "playerx/transfers/WorkQueue.h"

namespace playerx::transfers {

/// The files of one session: opens its partial, syncs it beside the transfer, has the film placed.
///
/// Lives on the engine's thread, which does the quick work itself: a film of a moment is opened,
/// written and placed there. What may have to wait for the disk is done on the files thread. The
/// partial belongs to one of the two at a time, but for the syncs. Each `then` is called on the
/// engine's thread, within the call or later, but not after `release`.
class SessionFiles : public std::enable_shared_from_this<SessionFiles> {
 public:
  using Then = std::function<void()>;
  using OnEngine = std::function<void(std::function<void()>)>;

  /// `onEngine` runs work on the engine's thread; between two syncs are `syncEvery` bytes. `files`
  /// outlives this.
  SessionFiles(std::shared_ptr<Session> session, WorkQueue& files, OnEngine onEngine,
               std::uint64_t syncEvery);

  void open(const Then& then);

  /// What `open` has found; null without film and failure when the session was stopped before.
  const Opened& opened() const { return slot_->opened; }
  Part& part() const { return *slot_->opened.part; }

  /// Has the bytes that have come synced beside the transfer, so that little is left to do when the
  /// last one has.
  void syncIfDue();

  /// Gives the film its place when it has the sum (empty: any).
  void place(const std::string& sha256, const Then& then);
  const Placed& placed() const { return slot_->placed; }

  /// Lets go of the partial, for the next session of the same film.
  void release();

 private:
  enum class Cost { kQuick, kSlow };
  /// Handed back and forth between the two threads.
  struct Slot {
    Opened opened;
    Placed placed;
  };
  using Job = std::function<void(Slot&, Session&)>;

  void perform(Cost cost, const Job& job, const Then& then);
  void place(const std::string& sha256, Waiting waiting, const Then& then);

  const std::shared_ptr<Session> session_;
  WorkQueue& files_;
  const OnEngine onEngine_;
  const std::uint64_t syncEvery_;
  const std::shared_ptr<Slot> slot_ = std::make_shared<Slot>();
  bool isReleased_ = false;
  bool isSyncing_ = false;
  std::uint64_t synced_ = 0;  ///< bytes
};

}  // namespace playerx::transfers
