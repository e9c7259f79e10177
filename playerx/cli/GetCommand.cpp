#include "playerx/cli/GetCommand.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <optional>
#include <utility>

#include "playerx/app/inputs/InputText.h"
#include "playerx/cli/Presentation.h"
#include "playerx/cli/Reporter.h"
#include "playerx/cli/WakeUp.h"

namespace playerx::cli {

using session::QueueEvent;
using session::Reply;
using session::Request;

namespace {

/// How often the speed of a running transfer is looked at when nothing else happens.
constexpr std::chrono::milliseconds kSpeedInterval(500);

/// How often the end waits for files of what was removed, each time for up to kSpeedInterval.
constexpr int kRestsForLeftovers = 4;

constexpr char kInterrupted[] =
    "Interrupted; what has arrived is kept, and the next `get` goes on from there.";

/// Whether an input is a ticket that takes a noticeable time to read. Protected ones are small:
/// they wait for the online services, which is not to be broken off half-way.
bool takesLong(const std::string& input) {
  constexpr std::uintmax_t kLarge = 1'000'000;
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(input, error);
  return !error && size >= kLarge && inputs::isTicketPath(input);
}

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
      service_(
          session, model::QueueTracker::Keep::kUnlessComplete, [&wakeUp] { wakeUp.raise(); },
          std::move(probe), [this](const QueueEvent& event) { tell(event); }),
      server_(service_, [&wakeUp] { wakeUp.raise(); }) {}

int GetCommand::run() {
  const std::string problem = server_.listen(session_.places().data);
  if (!problem.empty()) reporter_.note(problem + " Other players cannot reach this queue.");
  session_.start();
  const std::optional<int> refused = addInputs();
  if (!refused) return park();
  // Not before: an input may be a film whose queue was lost, of which much has arrived.
  service_.deleteLeftovers();
  const auto given = static_cast<int>(options_.request.inputs.size());
  if (*refused > 0 && *refused == given) return kExitUsage;
  return workUntilDone(*refused);
}

/// Returns how many were refused; nullopt when the user interrupts, which keeps what was added.
std::optional<int> GetCommand::addInputs() {
  const std::vector<std::string>& inputs = options_.request.inputs;
  if (inputs.empty()) service_.handle(options_.request);
  int refused = 0;
  for (const std::string& input : inputs) {
    if (wakeUp_.takeInterrupt()) return std::nullopt;
    if (!addOne(input)) ++refused;
  }
  if (wakeUp_.takeInterrupt()) return std::nullopt;
  return refused;
}

/// False when it was refused.
bool GetCommand::addOne(const std::string& input) {
  Request request = options_.request;
  request.inputs = {input};
  std::optional<InterruptsExit> exits;
  if (takesLong(input)) exits.emplace(kExitInterrupted, kInterrupted);
  Reply reply = service_.handle(request);
  exits.reset();
  // What is true of every input is said once.
  std::erase_if(reply.notes,
                [this](const std::string& note) { return !notes_.insert(note).second; });
  present(reply, reporter_);
  for (const model::ItemState& item : reply.items) own_.insert(item.id);
  return reply.outcome != Reply::Outcome::kWrongUse;
}

int GetCommand::workUntilDone(int refused) {
  int rests = kRestsForLeftovers;
  for (;;) {
    const auto start = std::chrono::steady_clock::now();
    server_.answerRequests();
    service_.update();
    tellQueue();
    if (service_.watch().isIdle() && !(service_.mayHaveLeftovers() && --rests > 0)) break;
    const auto took = std::chrono::steady_clock::now() - start;
    if (wakeUp_.rest(restAfter(took)) == WakeReason::kInterrupt) return park();
    const WakeReason reason = wakeUp_.wait(kSpeedInterval);
    if (reason == WakeReason::kInterrupt) return park();
    if (reason == WakeReason::kTimeout) service_.watch().measure();
  }
  service_.update();  // what the player said of the last film
  const auto isLeft = [this](unsigned int id) {
    return (options_.request.inputs.empty() || own_.contains(id)) && !failed_.contains(id);
  };
  const model::QueueTracker& queue = service_.watch().queue();
  noteIfEmpty(queue.size(), reporter_);
  noteWhatIsLeft(queue.kept(), isLeft, reporter_);
  if (!failed_.empty()) return kExitFailed;
  return refused > 0 ? kExitUsage : kExitDone;
}

void GetCommand::tell(const QueueEvent& event) {
  const bool isOwn = options_.request.inputs.empty() || own_.contains(event.item.id);
  const bool isLost =
      event.kind == QueueEvent::Kind::kRemoved && isOwn && model::isUnfinished(event.item.status);
  if (event.kind == QueueEvent::Kind::kFailed || isLost) failed_.insert(event.item.id);
  present(event, reporter_);
  if (isLost) noteRemoved(event.item, reporter_);
  server_.publish(event);
}

void GetCommand::tellQueue() {
  const model::QueueProgress progress = service_.progress();
  if (progress == std::exchange(told_, progress)) return;
  tell({.kind = QueueEvent::Kind::kQueue, .queue = progress});
}

int GetCommand::park() {
  session_.pause();
  service_.update();
  reporter_.note(kInterrupted);
  return kExitInterrupted;
}

}  // namespace playerx::cli
