#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "playerx/app/model/ItemState.h"
#include "playerx/app/reasons/FailureReason.h"
#include "playerx/app/reasons/ServerProbe.h"
#include "playerx/app/session/QueueView.h"

namespace playerx {

class WakeUp;

/// A failed item with the reason that was found for it.
struct ExplainedFailure {
  ItemState item;
  FailureReason reason;
};

/// Finds out why items failed: from what the module told the view, from what the download library
/// knows, and else by asking the server once more, on a thread of its own so that the user sees the
/// rest of the queue go on. Used on the main thread; destruction breaks running questions off.
class FailureExplainer {
 public:
  /// What the download library knows about the last transfer of an item; none when nothing.
  using LibraryReason = std::function<std::optional<FailureReason>(const ItemState&)>;

  /// `wakeUp` is raised when an answer is there; not owned, outlives the explainer.
  FailureExplainer(WakeUp& wakeUp, TrustedAuthorities authorities, LibraryReason libraryReason);
  FailureExplainer(const FailureExplainer&) = delete;
  FailureExplainer& operator=(const FailureExplainer&) = delete;
  ~FailureExplainer();

  /// Looks for the reason; it arrives with a later `takeAnswers`. `notices` are those about this
  /// item, `words` what the online services said meanwhile.
  void explain(const ItemState& item, const std::vector<Notice>& notices, const std::string& words);

  /// The answers since the last call.
  std::vector<ExplainedFailure> takeAnswers();

  /// Whether an answer is still to come or to be taken.
  bool isBusy() const;

 private:
  void answer(const ItemState& item, FailureReason reason);

  WakeUp& wakeUp_;
  const TrustedAuthorities authorities_;
  const LibraryReason libraryReason_;
  std::size_t open_ = 0;  ///< questions whose answers were not taken; main thread only
  std::mutex mutex_;
  std::vector<ExplainedFailure> answers_;  // guarded by mutex_
  std::vector<std::jthread> questions_;    // last: joined before the rest goes
};

/// The reason that the module's notices alone give, or, for an item with a ticket, the words of the
/// online services; none when they leave it open, to the server of the film or, for an item without
/// address (rights-protected and never authorised), to the online services.
std::optional<FailureReason> reasonFromNotices(const ItemState& item,
                                               const std::vector<Notice>& notices,
                                               const std::string& words);

/// Why a protected item could not even be authorised: as a look at the online services at `address`
/// (empty for none) shows.
FailureReason reasonOfServices(const std::string& address, const ProbeResult& probe);

/// A reason of the transfer in the words that fit a protected film.
FailureReason wordedFor(const ItemState& item, FailureReason reason);

/// Whether the server has to be asked all the same: there seems to be too little room, but for a
/// size that the module did not even note and that may be nonsense.
bool isWorthAsking(const ItemState& item, const FailureReason& reason);

/// The reason to give, of the one that is known and the one that a second look at the server shows.
FailureReason weigh(const std::optional<FailureReason>& known,
                    const std::optional<FailureReason>& probed);

}  // namespace playerx
