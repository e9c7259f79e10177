#include "playerx/cli/GetCommand.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "playerx/app/inputs/Input.h"
#include "playerx/app/model/FilmCheck.h"
#include "playerx/cli/Reporter.h"
#include "playerx/cli/WakeUp.h"

namespace playerx::cli {

using model::ItemState;
using model::QueueChange;

namespace {

/// How often the speed of a running transfer is looked at when nothing else happens.
constexpr std::chrono::milliseconds kSpeedInterval(500);

/// The pause after a look at the queue that took this long: a long queue changes often, and looking
/// at it must not take the time that the download needs.
std::chrono::milliseconds restAfter(std::chrono::steady_clock::duration look) {
  constexpr int kPauses = 9;  // as long as the look
  constexpr std::chrono::milliseconds kLongest(200);
  return std::min(std::chrono::ceil<std::chrono::milliseconds>(kPauses * look), kLongest);
}

}  // namespace

GetCommand::GetCommand(const Options& options, session::PlayerSession& session, Reporter& reporter,
                       WakeUp& wakeUp, reasons::Probe probe)
    : options_(options),
      session_(session),
      reporter_(reporter),
      wakeUp_(wakeUp),
      explainer_([&wakeUp] { wakeUp.raise(); },
                 [&session](const std::string& address) { return session.findTransfer(address); },
                 std::move(probe)),
      queue_(model::snapshotOf(session.manager())) {}

int GetCommand::run() {
  session_.start();
  const std::optional<int> refused = addInputs();
  if (!refused) return park();
  passMessagesOn();
  if (*refused > 0 && *refused == static_cast<int>(options_.inputs.size())) return kExitUsage;
  return workUntilDone(*refused);
}

/// Returns how many were refused; nullopt when the user interrupts, which keeps what was added.
std::optional<int> GetCommand::addInputs() {
  int refused = 0;
  for (const std::string& input : options_.inputs) {
    if (wakeUp_.takeInterrupt()) return std::nullopt;
    if (!addOne(input)) ++refused;
    lookAtQueue();
  }
  return refused;
}

/// False when it was refused.
bool GetCommand::addOne(const std::string& input) {
  using inputs::AddResult;
  const AddResult result = inputs::addInput(input, session_.manager(), queue_,
                                            [this] { return session_.takeMessages(); });
  if (result.outcome == AddResult::kAlreadyQueued) {
    reporter_.note(input + " is in the queue already; going on with it.");
  }
  if (result.refusal) reporter_.refused(input, *result.refusal);
  return result.outcome != AddResult::kRefused;
}

int GetCommand::workUntilDone(int refused) {
  for (;;) {
    const auto start = std::chrono::steady_clock::now();
    passMessagesOn();
    lookAtQueue();
    reportAnswers();
    if (isDone()) break;
    const auto took = std::chrono::steady_clock::now() - start;
    if (wakeUp_.rest(restAfter(took)) == WakeReason::kInterrupt) return park();
    const WakeReason reason = wakeUp_.wait(kSpeedInterval);
    if (reason == WakeReason::kInterrupt) return park();
    if (reason == WakeReason::kTimeout) reportSpeed();
  }
  passMessagesOn();  // what the player said of the last film
  if (somethingFailed_) return kExitFailed;
  return refused > 0 ? kExitUsage : kExitDone;
}

void GetCommand::lookAtQueue() {
  std::vector<ItemState> now = model::snapshotOf(session_.manager());
  const std::vector<QueueChange> changes = changesBetween(queue_, now);
  queue_ = std::move(now);
  for (const QueueChange& change : changes) report(change);
}

void GetCommand::report(const QueueChange& change) {
  const ItemState& item = change.item;
  switch (change.kind) {
    case QueueChange::kAdded:
      return reporter_.added(item);
    case QueueChange::kChanged:
      measureSpeed(item);
      reporter_.changed(item, speeds_[item.id].bytesPerSecond());
      return playWhatIsReady(item);
    case QueueChange::kFinished:
      lastWords_.clear();
      reporter_.finished(item, findOddity(item, session_.places().media));
      return playWhatIsReady(item);
    case QueueChange::kFailed:
      somethingFailed_ = true;
      return explainer_.explain(item, session_.takeNotices(item.id), std::exchange(lastWords_, {}));
  }
}

void GetCommand::reportSpeed() {
  for (const ItemState& item : queue_) {
    if (measureSpeed(item)) reporter_.changed(item, speeds_[item.id].bytesPerSecond());
  }
}

/// False when the item is not being transferred, or how far it has come is not known.
bool GetCommand::measureSpeed(const ItemState& item) {
  if (item.status != DownloadStatusDownloading) return false;
  const std::optional<TransferReport> transfer = session_.findTransfer(item.url);
  if (transfer) speeds_[item.id].feed(model::SpeedMeter::Clock::now(), transfer->arrived);
  return transfer.has_value();
}

void GetCommand::reportAnswers() {
  for (const reasons::ExplainedFailure& answer : explainer_.takeAnswers()) {
    reporter_.failed(answer.item, answer.explanation);
  }
}

void GetCommand::passMessagesOn() {
  for (const std::string& sentence : session_.takeMessages()) {
    lastWords_ = sentence;
    reporter_.note(sentence);
  }
}

void GetCommand::playWhatIsReady(const ItemState& item) {
  const bool ready = item.status == DownloadStatusCompleted ||
                     (item.status == DownloadStatusDownloading && item.playable);
  if (!options_.play || !ready || !played_.insert(item.id).second) return;
  if (session_.manager().play(item.id)) return;
  reporter_.note("No player could be started for " + item.title + ".");
}

bool GetCommand::isDone() const {
  const bool workLeft = std::any_of(queue_.begin(), queue_.end(), [](const ItemState& item) {
    return model::isUnfinished(item.status);
  });
  return !workLeft && !explainer_.isBusy();
}

int GetCommand::park() {
  session_.manager().pause();
  lookAtQueue();
  passMessagesOn();
  reporter_.note("Interrupted; what has arrived is kept, and the next `get` goes on from there.");
  return kExitInterrupted;
}

}  // namespace playerx::cli
