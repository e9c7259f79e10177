#include "playerx/cli/QueueCommand.h"

#include <filesystem>
#include <memory>

#include "playerx/app/door/QueueOpening.h"
#include "playerx/app/inputs/InputText.h"
#include "playerx/cli/GetCommand.h"
#include "playerx/cli/Presentation.h"
#include "playerx/cli/RemoteGet.h"
#include "playerx/cli/Reporter.h"
#include "playerx/cli/WakeUp.h"

namespace playerx::cli {

using door::OpenedQueue;
using door::QueueClient;
using session::PlayerSession;
using session::QueueEvent;
using session::Reply;
using session::Request;
using Access = PlayerSession::Access;
using Action = Request::Action;
using Where = OpenedQueue::Where;

namespace {

/// How long a process that has the queue without serving it is waited for: short commands have it
/// for a moment each.
constexpr std::chrono::seconds kLongestOpening(10);

/// How long the process that has the queue may take for its answer; tickets may have it wait for
/// the online services.
constexpr std::chrono::seconds kLongestAnswer(60);
constexpr std::chrono::seconds kLongestList(5);

/// How often a request is begun again because the process that has the queue ends before it
/// answers. Another one may have it each time.
constexpr int kMostRounds = 20;
constexpr char kAlwaysGone[] =
    "The player that holds the queue ends each time before it answers; try again later.";

constexpr char kOwnMedia[] =
    "The player that has the queue puts films into its own media folder, whatever --media says.";

constexpr char kLostAnswer[] =
    "The player that had the queue has ended before it answered; `list` shows what the queue is "
    "now.";

reasons::Probe probe() { return reasons::serverProbe(trustedAuthorities()); }

OpenedQueue open(PlayerSession& session, Access access, WakeUp& wakeUp) {
  return door::openQueue(session, access, kLongestOpening,
                         [&wakeUp](std::chrono::milliseconds time) {
                           return wakeUp.rest(time) != WakeReason::kInterrupt;
                         });
}

/// The request as it reads in a process with another working folder, in UTF-8.
Request forAnotherProcess(Request request) {
  for (std::string& input : request.inputs) {
    input = inputs::cleaned(input);
    if (inputs::isTicketPath(input)) input = std::filesystem::absolute(inputs::unquoted(input));
  }
  return request;
}

int complainOfOpening(const OpenedQueue& opened, Reporter& reporter) {
  return complainOf(opened.problem, reporter, kExitInterrupted);
}

int getHere(const Options& options, PlayerSession& session, Reporter& reporter, WakeUp& wakeUp) {
  noteMessages(session, reporter);
  const int status = GetCommand(options, session, reporter, wakeUp, probe()).run();
  return complainOf(session.saveAgain(), reporter, status);
}

/// Removing must work on a full disk.
Access accessFor(const Request& request) {
  const bool frees = request.action == Action::kRemove || request.action == Action::kClear ||
                     request.action == Action::kClean;
  return frees ? Access::kFree : Access::kChange;
}

int get(Options options, PlayerSession& session, Reporter& reporter, WakeUp& wakeUp) {
  int before = kExitDone;
  for (int round = 0; round < kMostRounds; ++round) {
    const OpenedQueue opened = open(session, Access::kChange, wakeUp);
    if (opened.where == Where::kNowhere) return complainOfOpening(opened, reporter);
    if (opened.where == Where::kHere) {
      const int status = getHere(options, session, reporter, wakeUp);
      return status == kExitDone ? before : status;
    }
    const bool isIgnored = !options.session.mediaFolder.empty() && !options.quiet;
    if (isIgnored && round == 0) reporter.note(kOwnMedia);
    options.request = forAnotherProcess(options.request);
    RemoteGet remote(options, *opened.client, reporter, wakeUp);
    if (const auto status = remote.run()) return *status == kExitDone ? before : *status;
    if (!opened.client->hasGone()) {
      return complainOf(opened.client->problem(), reporter, kExitFailed);
    }
    if (remote.status() != kExitDone) before = remote.status();
    reporter.note(opened.client->problem() + " Going on.");
    options.request = remote.remainder();
  }
  return complainOf(kAlwaysGone, reporter, kExitFailed);
}

/// Carries the request out while nothing is downloaded.
int requestHere(const Request& request, PlayerSession& session, Reporter& reporter) {
  const auto tell = [&reporter](const QueueEvent& event) {
    const bool isWanted =
        event.kind == QueueEvent::Kind::kAdded || event.kind == QueueEvent::Kind::kNote;
    if (isWanted) present(event, reporter);
  };
  session::QueueService service(
      session, model::QueueTracker::Keep::kUnlessComplete, [] {}, probe(), tell);
  return present(service.handle(request), reporter);
}

/// Whether a request may be carried out twice with the effect of once.
bool isRepeatable(const Request& request) {
  return request.position == 0 && (request.action != Action::kAdd || !request.again);
}

int request(const Options& options, PlayerSession& session, Reporter& reporter, WakeUp& wakeUp) {
  for (int round = 0; round < kMostRounds; ++round) {
    const OpenedQueue opened = open(session, accessFor(options.request), wakeUp);
    if (opened.where == Where::kNowhere) return complainOfOpening(opened, reporter);
    if (opened.where == Where::kHere) {
      noteMessages(session, reporter);
      const bool limitsNothing =
          options.request.action == Action::kAdd && options.request.rateLimit;
      if (limitsNothing) reporter.note(session::kLimitsNothing);
      const int status = requestHere(options.request, session, reporter);
      // What changes nothing need not be saved on a full disk.
      const bool frees = accessFor(options.request) == Access::kFree;
      if (frees && status == kExitUsage) return status;
      return complainOf(frees ? session.saveProblem() : session.saveAgain(), reporter, status);
    }
    const std::optional<Reply> reply =
        opened.client->ask(forAnotherProcess(options.request), kLongestAnswer);
    if (reply) {
      for (const model::ItemState& item : reply->items) {
        if (!reply->known.contains(item.id)) reporter.added(item);
      }
      return present(*reply, reporter);
    }
    if (!opened.client->hasGone())
      return complainOf(opened.client->problem(), reporter, kExitFailed);
    if (!isRepeatable(options.request)) return complainOf(kLostAnswer, reporter, kExitFailed);
  }
  return complainOf(kAlwaysGone, reporter, kExitFailed);
}

/// Prints the queue that a process has answered with, or why it has not.
int printReply(const Reply& reply, const Options& options, const PlayerSession& session,
               Reporter& reporter) {
  const bool isQueue = reply.notes.empty();
  if (!isQueue) return present(reply, reporter);
  QueuePrint print(session.places(), options.isLong, reporter);
  for (const model::ItemState& item : reply.items) {
    const auto progress = reply.progress.find(item.id);
    print.add(item, progress == reply.progress.end() ? model::Progress{} : progress->second);
  }
  print.end(reply.isPaused);
  return present(reply, reporter);
}

/// Prints the queue of this session. A copy of all of a long one would take as much memory again.
void printSaved(const Options& options, PlayerSession& session, Reporter& reporter) {
  QueuePrint print(session.places(), options.isLong, reporter);
  for (const VeskPlayerX::QueuedVersion& version : session.reader().getVersions()) {
    const std::unique_ptr<VeskPlayerX::DownloadItemInterface> item(
        session.reader().getCopy(version.id));
    if (item) print.add(model::stateOf(*item));
  }
  print.end();
}

/// Prints the queue of the process that has it, or else the saved one as it lies there.
int list(const Options& options, PlayerSession& session, Reporter& reporter) {
  QueueClient client;
  if (client.connect(session.places().data, kLongestList) == QueueClient::Outcome::kQueue) {
    const std::optional<Reply> reply = client.ask(options.request, kLongestList);
    if (reply) return printReply(*reply, options, session, reporter);
  }
  const bool isHeld = !client.problem().empty() && !client.hasGone();
  if (isHeld) reporter.note(client.problem() + " This is what it has saved.");
  const std::string problem = session.open(Access::kLook);
  if (!problem.empty()) return complainOf(problem, reporter, kExitFailed);
  noteMessages(session, reporter);
  printSaved(options, session, reporter);
  return kExitDone;
}

int watch(const Options& options, PlayerSession& session, Reporter& reporter, WakeUp& wakeUp) {
  QueueClient client;
  switch (client.connect(session.places().data, kLongestList)) {
    case QueueClient::Outcome::kNoServer:
      reporter.note("Nothing is being downloaded; `get` starts a download.");
      return kExitDone;
    case QueueClient::Outcome::kBusy:
    case QueueClient::Outcome::kIncompatible:
      return complainOf(client.problem(), reporter, kExitFailed);
    case QueueClient::Outcome::kQueue:
      break;
  }
  const std::optional<int> status = RemoteGet(options, client, reporter, wakeUp).run();
  if (status == kExitInterrupted) return kExitInterrupted;
  if (!client.hasGone()) return complainOf(client.problem(), reporter, kExitDone);
  // The end of the other player is that of the view.
  reporter.note(client.problem());
  return kExitDone;
}

}  // namespace

int runOnQueue(const Options& options, PlayerSession& session, Reporter& reporter, WakeUp& wakeUp) {
  if (options.command == Options::kGet) return get(options, session, reporter, wakeUp);
  if (options.request.action == Action::kList) return list(options, session, reporter);
  if (options.request.action == Action::kWatch) return watch(options, session, reporter, wakeUp);
  return request(options, session, reporter, wakeUp);
}

void noteMessages(PlayerSession& session, Reporter& reporter) {
  for (const std::string& sentence : session.takeMessages()) reporter.note(sentence);
}

int complainOf(const std::string& problem, Reporter& reporter, int status) {
  if (problem.empty()) return status;
  reporter.note(problem);
  return kExitFailed;
}

}  // namespace playerx::cli
