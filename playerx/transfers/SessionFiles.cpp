#include "playerx/transfers/SessionFiles.h"

#include <utility>

namespace playerx::transfers {

SessionFiles::SessionFiles(std::shared_ptr<Session> session, WorkQueue& files, OnEngine onEngine,
                           std::uint64_t syncEvery)
    : session_(std::move(session)),
      files_(files),
      onEngine_(std::move(onEngine)),
      syncEvery_(syncEvery) {}

// Quick work waits for its turn only while slow work of earlier sessions is pending. The slot
// outlives this object as long as the files thread needs it.
void SessionFiles::perform(Cost cost, const Job& job, const Then& then) {
  if (cost == Cost::kQuick && files_.isIdle()) {
    job(*slot_, *session_);
    return then();
  }
  files_.post(
      [job, then, slot = slot_, session = session_, weak = weak_from_this(), onEngine = onEngine_] {
        job(*slot, *session);
        onEngine([then, weak] {
          const auto self = weak.lock();
          if (self && !self->isReleased_) then();
        });
      });
}

void SessionFiles::open(const Then& then) {
  const auto opening = [](Slot& slot, Session& session) {
    if (!session.stopped) slot.opened = openPart(session.request);
  };
  perform(Cost::kQuick, opening, [this, then] {
    if (opened().part) synced_ = part().state().durable;
    then();
  });
}

void SessionFiles::syncIfDue() {
  const std::uint64_t size = part().file().size();
  if (size < synced_) synced_ = 0;
  if (isSyncing_ || size - synced_ < syncEvery_) return;
  isSyncing_ = true;
  synced_ = size;
  const auto syncing = [mark = part().mark()](Slot& slot, Session&) {
    // A failing disk shows when the film is placed.
    static_cast<void>(slot.opened.part->makeDurable(mark));
  };
  perform(Cost::kSlow, syncing, [this] { isSyncing_ = false; });
}

void SessionFiles::place(const std::string& sha256, const Then& then) {
  const bool tookLong = opened().part && part().isSaved();
  place(sha256, tookLong ? Waiting::kAllowed : Waiting::kForbidden, then);
}

void SessionFiles::place(const std::string& sha256, Waiting waiting, const Then& then) {
  const auto placing = [sha256, waiting](Slot& slot, Session& session) {
    std::unique_ptr<Part>& part = slot.opened.part;
    slot.placed = part
                      ? placePart(*part, session.request, sha256, session.stopped, waiting)
                      : placeFilmAgain(slot.opened.film, session.request, session.stopped, waiting);
    // The next session of the same film must not find the partial claimed.
    const Placed::Kind kind = slot.placed.kind;
    if (kind == Placed::Kind::kDone || kind == Placed::Kind::kFailed) part.reset();
  };
  perform(waiting == Waiting::kAllowed ? Cost::kSlow : Cost::kQuick, placing, [this, sha256, then] {
    const bool mustWait = placed().kind == Placed::Kind::kMustWait;
    return mustWait ? place(sha256, Waiting::kAllowed, then) : then();
  });
}

void SessionFiles::release() {
  isReleased_ = true;
  files_.post([slot = slot_] { slot->opened.part.reset(); });
}

}  // namespace playerx::transfers
