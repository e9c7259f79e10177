#include "playerx/cli/GetCommand.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "VeskPlayerX/DownloadManagerInterface.h"
#include "kvpm/PathTools.h"
#include "kvpm/StringTools.h"
#include "playerx/app/inputs/InputKind.h"
#include "playerx/app/inputs/TicketFile.h"
#include "playerx/app/model/FilmCheck.h"
#include "playerx/app/model/QueueChanges.h"
#include "playerx/app/session/QueueView.h"
#include "playerx/cli/ConsoleMessages.h"
#include "playerx/cli/Options.h"
#include "playerx/cli/Reporter.h"
#include "playerx/cli/WakeUp.h"

namespace playerx {

namespace {

using kvpm::StringTools;

/// How often the speed of a running transfer is looked at when nothing else happens.
constexpr std::chrono::milliseconds kSpeedInterval(500);

/// How long to leave the queue alone after a look that took so long: a long queue changes often,
/// and looking must not take the time that the download needs.
std::chrono::milliseconds restAfter(std::chrono::steady_clock::duration look) {
  constexpr int kShare = 9;  // of the time is not spent looking, to one part that is
  constexpr std::chrono::milliseconds kLongest(200);
  return std::min(std::chrono::ceil<std::chrono::milliseconds>(kShare * look), kLongest);
}

}  // namespace

GetCommand::GetCommand(const Options& options, VeskPlayerX::DownloadManagerInterface& manager,
                       QueueView& view, ConsoleMessages& messages, Reporter& reporter,
                       WakeUp& wakeUp, TransferKnowledge knowledge)
    : options_(options),
      manager_(manager),
      view_(view),
      messages_(messages),
      reporter_(reporter),
      wakeUp_(wakeUp),
      knowledge_(std::move(knowledge)),
      explainer_(wakeUp, trustedAuthorities(), knowledge_.reasonOf),
      queue_(snapshotOf(manager)) {}

int GetCommand::run() {
  const std::optional<int> refused = addInputs();
  if (!refused) return park();
  passMessagesOn();
  if (*refused > 0 && *refused == static_cast<int>(options_.inputs.size())) return kExitUsage;
  return workUntilDone(*refused);
}

/// Returns how many were refused; nothing when the user interrupts, which keeps what was added.
std::optional<int> GetCommand::addInputs() {
  int refused = 0;
  for (const std::string& input : options_.inputs) {
    if (wakeUp_.takeInterrupt()) return std::nullopt;
    if (!addOne(input)) ++refused;
    lookAtQueue();
  }
  return refused;
}

bool GetCommand::addOne(const std::string& input) {
  FailureReason reason;
  switch (sortInput(input, &reason)) {
    case InputKind::kAddress:
      return addAddress(input);
    case InputKind::kTicket:
      return addTicket(input);
    case InputKind::kUnusable:
      break;
  }
  return refuse(input, reason);
}

bool GetCommand::addAddress(const std::string& address) {
  if (isWaiting(address)) {
    reporter_.note(address + " is in the queue already; going on with it.");
    return true;
  }
  const bool added = manager_.add(StringTools::stringToWString(address), L"", L"") != nullptr;
  return added || refuse(address, unsupportedType());
}

/// Whether the queue holds an item of this address that is still to be downloaded.
bool GetCommand::isWaiting(const std::string& address) const {
  return std::any_of(queue_.begin(), queue_.end(), [&](const ItemState& item) {
    return item.url == address && isUnfinished(item.status);
  });
}

bool GetCommand::addTicket(const std::string& path) {
  const std::wstring wide = StringTools::stringToWString(path);
  const auto refusal = refusalOfTicket(StringTools::stripBeginingAndEndChar(wide, L'"'));
  if (refusal) return refuse(path, *refusal);
  if (!manager_.addTicket(wide, false).empty()) return true;
  const std::vector<std::string> words = messages_.take();
  if (!words.empty()) return refuse(path, {"services", words.back()});
  return refuse(path, {"empty_ticket",
                       "This ticket names nothing that can be downloaded; `playerx-cli explain` "
                       "says why."});
}

bool GetCommand::refuse(const std::string& argument, const FailureReason& reason) {
  reporter_.refused(argument, reason);
  return false;
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
  std::vector<ItemState> now = snapshotOf(manager_);
  const std::vector<QueueChange> changes = changesBetween(queue_, now);
  queue_ = std::move(now);
  for (const QueueChange& change : changes) report(change);
}

void GetCommand::report(const QueueChange& change) {
  switch (change.kind) {
    case QueueChange::kAdded:
      return reporter_.added(change.item);
    case QueueChange::kChanged:
      measureSpeed(change.item);
      reporter_.changed(change.item, speeds_[change.item.id].bytesPerSecond());
      return playWhatIsReady(change.item);
    case QueueChange::kFinished:
      lastWords_.clear();
      reporter_.finished(change.item);
      noteOddity(change.item);
      return playWhatIsReady(change.item);
    case QueueChange::kFailed:
      somethingFailed_ = true;
      return explainer_.explain(change.item, view_.takeNotices(change.item.id),
                                std::exchange(lastWords_, {}));
  }
}

void GetCommand::noteOddity(const ItemState& film) {
  const std::string folder = StringTools::wStringToString(kvpm::PathTools::getVeskMoviesFolder());
  const std::string oddity = oddityOf(film, folder);
  if (!oddity.empty()) reporter_.note(oddity);
}

void GetCommand::reportSpeed() {
  for (const ItemState& item : queue_) {
    if (measureSpeed(item)) reporter_.changed(item, speeds_[item.id].bytesPerSecond());
  }
}

/// False when the item is not flowing, or nobody knows how far it has come.
bool GetCommand::measureSpeed(const ItemState& item) {
  if (item.status != DownloadStatusDownloading || !knowledge_.bytesOf) return false;
  const std::optional<std::uint64_t> bytes = knowledge_.bytesOf(item);
  if (bytes) speeds_[item.id].feed(SpeedMeter::Clock::now(), *bytes);
  return bytes.has_value();
}

void GetCommand::reportAnswers() {
  for (const ExplainedFailure& answer : explainer_.takeAnswers()) {
    reporter_.failed(answer.item, answer.reason);
  }
}

void GetCommand::passMessagesOn() {
  for (const std::string& sentence : messages_.take()) {
    lastWords_ = sentence;
    reporter_.note(sentence);
  }
}

void GetCommand::playWhatIsReady(const ItemState& item) {
  const bool ready = item.status == DownloadStatusCompleted ||
                     (item.status == DownloadStatusDownloading && item.playable);
  if (!options_.play || !ready || !played_.insert(item.id).second) return;
  if (!manager_.play(item.id)) reporter_.note("No player could be started for " + item.title + ".");
}

bool GetCommand::isDone() const {
  const bool workLeft = std::any_of(queue_.begin(), queue_.end(), [](const ItemState& item) {
    return isUnfinished(item.status);
  });
  return !workLeft && !explainer_.isBusy();
}

int GetCommand::park() {
  manager_.pause();
  lookAtQueue();
  passMessagesOn();
  reporter_.note("Interrupted; what has arrived is kept, and the next `get` goes on from there.");
  return kExitInterrupted;
}

}  // namespace playerx
