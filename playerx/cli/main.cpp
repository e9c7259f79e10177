#include <curl/curl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <QCoreApplication>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "playerx/app/session/DataFolderLock.h"
#include "playerx/app/session/HomeFolder.h"
#include "playerx/app/session/PlayerHost.h"
#include "playerx/app/session/QueueView.h"
#include "playerx/app/session/SavedQueue.h"
#include "playerx/app/session/SetAsideFiles.h"
#include "playerx/app/session/TransferKnowledge.h"
#include "playerx/cli/ConsoleMessages.h"
#include "playerx/cli/ExplainCommand.h"
#include "playerx/cli/GetCommand.h"
#include "playerx/cli/Options.h"
#include "playerx/cli/QueueCommands.h"
#include "playerx/cli/Reporter.h"
#include "playerx/cli/SlotQuestion.h"
#include "playerx/cli/StandardOutput.h"
#include "playerx/cli/WakeUp.h"
#include "playerx/platform/ThreadGate.h"
#include "playerx/settings/TrustedAuthorities.h"

namespace playerx {
namespace {

constexpr int kUsualColumns = 80;

/// Columns of the terminal on standard output; 0 when it is none.
int terminalColumns() {
  winsize size{};
  if (isatty(STDOUT_FILENO) == 0 || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) return 0;
  return size.ws_col == 0 ? kUsualColumns : size.ws_col;
}

std::unique_ptr<Reporter> makeReporter(bool json, int columns, std::ostream& out) {
  if (json) return makeJsonReporter(out, std::cerr);
  if (columns == 0) return makeLineReporter(out, std::cerr);
  return makeLiveReporter(out, std::cerr, columns);
}

/// Attaches a view for as long as it lives.
class ViewAttachment {
 public:
  ViewAttachment(VeskPlayerX::DownloadManagerInterface& manager, QueueView& view)
      : manager_(manager) {
    manager_.setViewInterface(&view);
  }
  ViewAttachment(const ViewAttachment&) = delete;
  ViewAttachment& operator=(const ViewAttachment&) = delete;
  ~ViewAttachment() { manager_.setViewInterface(nullptr); }

 private:
  VeskPlayerX::DownloadManagerInterface& manager_;
};

int runGet(const Options& options, PlayerHost& host, QueueView& view, ConsoleMessages& messages,
           Reporter& reporter, WakeUp& wakeUp) {
  trustForTransfers(host.context(), trustedAuthorities().file);
  GetCommand command(options, host.manager(), view, messages, reporter, wakeUp,
                     transferKnowledge(host.context()));
  ThreadGate::open();
  return command.run();
}

int runWithQueue(const Options& options, const Places& places, PlayerHost& host,
                 ConsoleMessages& messages, Reporter& reporter, WakeUp& wakeUp) {
  // Printing the queue must not write it: no view, no writing.
  if (options.command == Options::kList) {
    return runQueueCommand(options, host.manager(), reporter);
  }
  const SavedQueue saved(places.data);
  if (const std::string obstacle = saved.obstacle(); !obstacle.empty()) {
    reporter.note(obstacle);
    return kExitFailed;
  }
  QueueView view(wakeUp, askForSlot);
  const ViewAttachment attached(host.manager(), view);
  const int status = options.command == Options::kGet
                         ? runGet(options, host, view, messages, reporter, wakeUp)
                         : runQueueCommand(options, host.manager(), reporter);
  const std::string loss = saved.loss(host.manager());
  if (loss.empty()) return status;
  reporter.note(loss);
  return kExitFailed;
}

int run(const Options& options, bool hasHome) {
  WakeUp wakeUp;
  if (options.command != Options::kGet) wakeUp.releaseInterrupts();
  ConsoleMessages messages(wakeUp);
  const int columns = terminalColumns();
  StandardOutput output(options.diagnostics ? StandardOutput::Diagnostics::kToStandardError
                                            : StandardOutput::Diagnostics::kDropped);
  const std::unique_ptr<Reporter> reporter = makeReporter(options.json, columns, output.stream());
  const std::string lack = hasHome ? "" : homelessness(options, std::getenv("XDG_DATA_HOME"));
  if (!lack.empty()) {
    reporter->note(lack);
    return kExitUsage;
  }
  const Places places = setUpPlaces(options);

  if (options.command == Options::kExplain) {
    PlayerHost host(options, messages);
    const int status = runExplainCommand(options, host, output.stream());
    for (const std::string& sentence : messages.take()) reporter->note(sentence);
    return status;
  }
  std::unique_ptr<DataFolderLock> lock;
  if (options.command != Options::kList) {
    lock = std::make_unique<DataFolderLock>(places.data);
    if (!lock->problem().empty()) {
      reporter->note(lock->problem());
      return kExitFailed;
    }
  }
  // The scheduler starts with the module; it waits until the view is attached.
  ThreadGate::close();
  const SetAsideFiles keeper(places.data);
  PlayerHost host(options, messages);
  const std::string problem = host.loadManager();
  if (!problem.empty()) {
    reporter->note(problem);
    return kExitFailed;
  }
  for (const std::string& file : keeper.setAside()) {
    reporter->note("The queue could not be read; it was set aside as " + file + ".");
  }
  const int status = runWithQueue(options, places, host, messages, *reporter, wakeUp);
  if (output.stream().flush()) return status;
  reporter->note("What was to be said could not be written to standard output.");
  return kExitFailed;
}

}  // namespace
}  // namespace playerx

int main(int argc, char** argv) {
  playerx::blockInterrupts();
  std::signal(SIGXFSZ, SIG_IGN);  // the write that meets a limit says so
  const bool hasHome = playerx::settleHome();
  QCoreApplication application(argc, argv);
  QCoreApplication::setOrganizationName("Vesk");
  QCoreApplication::setApplicationName("VeskPlayerX");
  curl_global_init(CURL_GLOBAL_DEFAULT);

  int status = playerx::kExitDone;
  const std::optional<playerx::Options> options = playerx::parseOptions(argc, argv, &status);
  if (!options) return status;
  try {
    return playerx::run(*options, hasHome);
  } catch (const std::exception& error) {
    std::cerr << "playerx-cli: " << error.what() << std::endl;
    return playerx::kExitFailed;
  }
}
