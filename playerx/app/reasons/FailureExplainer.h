#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "playerx/app/model/ItemState.h"
#include "playerx/app/model/Notice.h"
#include "playerx/app/reasons/ServerProbe.h"
#include "playerx/platform/GuardMutex.h"
#include "playerx/transfers/TransferReports.h"

namespace playerx::reasons {

/// A failed item with the reason that was found for it.
struct ExplainedFailure {
  model::ItemState item;
  Explanation explanation;
};

/// Finds out why items failed: from what the download manager told the view, from what the download
/// library knows, and else by asking the server once more, on a thread of its own, so that the face
/// goes on. Servers are asked one after the other.
///
/// Used by one thread, which destroys it as well; that breaks a running question off.
class FailureExplainer {
 public:
  /// The download library's report on the last transfer of an address; nullopt without one.
  using FindTransfer = std::function<std::optional<TransferReport>(const std::string& address)>;

  /// `wake` is called on any thread when an answer is there, and must not wait.
  FailureExplainer(std::function<void()> wake, FindTransfer findTransfer, Probe probe);
  FailureExplainer(const FailureExplainer&) = delete;
  FailureExplainer& operator=(const FailureExplainer&) = delete;
  ~FailureExplainer();

  /// Looks for the reason; it arrives with a later `takeAnswers`. `notices` are those about this
  /// item, `words` what the online services said meanwhile.
  void explain(const model::ItemState& item, const std::vector<model::Notice>& notices,
               const std::string& words);

  /// The answers since the last call.
  std::vector<ExplainedFailure> takeAnswers();

  /// Whether an answer is still to come or to be taken.
  bool isBusy() const { return open_ > 0; }

 private:
  struct Question {
    model::ItemState item;
    std::string server;  ///< address to ask
    std::optional<Explanation> known;
    std::string crowded;  ///< folder with too little space, if that is what is known
  };

  void ask(Question question);
  void answer(const model::ItemState& item, Explanation explanation);
  std::optional<Question> takeQuestion();
  static Explanation answerTo(const Question& question, const ProbeResult& probe);
  void answerQuestions(const std::stop_token& stop);

  const std::function<void()> wake_;
  const FindTransfer findTransfer_;
  const Probe probe_;
  std::size_t open_ = 0;  ///< failures whose answers were not taken; the owner's thread only

  GuardMutex mutex_;
  Condition asked_;
  bool ends_ KVPM_GUARDED_BY(mutex_) = false;
  std::deque<Question> questions_ KVPM_GUARDED_BY(mutex_);
  std::vector<ExplainedFailure> answers_ KVPM_GUARDED_BY(mutex_);
  std::jthread asking_;  ///< last: uses all of the above
};

/// The reason that the notices alone give, or, for an item with a ticket, the words of the online
/// services. Nullopt when the server has to be asked: that of the film, or, for an item with a
/// ticket, the online services.
std::optional<Explanation> explainNotices(const model::ItemState& item,
                                          const std::vector<model::Notice>& notices,
                                          const std::string& words);

/// There is too little free space in `folder` for a film of `size` bytes (0: not known). Names what
/// is needed, which is twice the film and a little, and what is free now.
Explanation explainSpace(const std::string& folder, std::uint64_t size);

/// Why a protected item could not even be authorised, as a look at the online services shows.
Reason reasonOfServices(const ProbeResult& probe);

/// Whether the server has to be asked although a reason is known: there seems to be too little
/// room, but for a size that the manager did not note and that may be nonsense.
bool isDoubtful(const model::ItemState& item, const Explanation& known);

/// The explanation to give, of the one that is known and the one that a look at the server shows.
Explanation chooseExplanation(const std::optional<Explanation>& known,
                              const std::optional<Explanation>& probed);

/// The explanation in the words that fit a protected film.
Explanation adaptedTo(const model::ItemState& item, Explanation explanation);

}  // namespace playerx::reasons
