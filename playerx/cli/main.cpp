#include <curl/curl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <QCoreApplication>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "playerx/app/session/PlayerSession.h"
#include "playerx/cli/ExplainCommand.h"
#include "playerx/cli/GetCommand.h"
#include "playerx/cli/Options.h"
#include "playerx/cli/QueueCommands.h"
#include "playerx/cli/Reporter.h"
#include "playerx/cli/SlotQuestion.h"
#include "playerx/cli/StandardOutput.h"
#include "playerx/cli/WakeUp.h"

namespace playerx::cli {
namespace {

using session::PlayerSession;

constexpr int kUsualColumns = 80;

/// Columns of the terminal on standard output; 0 when it is not a terminal.
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

void noteMessages(PlayerSession& session, Reporter& reporter) {
  for (const std::string& sentence : session.takeMessages()) reporter.note(sentence);
}

/// Prints a problem; the exit status for it, or `status` when there is none.
int complainOf(const std::string& problem, Reporter& reporter, int status) {
  if (problem.empty()) return status;
  reporter.note(problem);
  return kExitFailed;
}

int runOnQueue(const Options& options, PlayerSession& session, Reporter& reporter, WakeUp& wakeUp) {
  using enum PlayerSession::Access;
  // Printing the queue must not write it.
  const PlayerSession::Access access = options.command == Options::kList ? kLook : kChange;
  const std::string problem = session.open(access);
  if (!problem.empty()) return complainOf(problem, reporter, kExitFailed);
  noteMessages(session, reporter);
  const int status = options.command == Options::kGet
                         ? GetCommand(options, session, reporter, wakeUp,
                                      reasons::serverProbe(trustedAuthorities()))
                               .run()
                         : runQueueCommand(options, session.manager(), reporter);
  return access == kLook ? status : complainOf(session.unsavedChanges(), reporter, status);
}

int runExplain(const Options& options, PlayerSession& session, Reporter& reporter,
               std::ostream& out) {
  const int status = runExplainCommand(options, session.plugins(),
                                       reasons::serverProbe(trustedAuthorities()), out);
  noteMessages(session, reporter);
  return status;
}

int run(const Options& options, bool hasHome) {
  WakeUp wakeUp;
  if (options.command != Options::kGet) wakeUp.releaseInterrupts();
  const int columns = terminalColumns();
  StandardOutput output(options.diagnostics ? StandardOutput::Diagnostics::kToStandardError
                                            : StandardOutput::Diagnostics::kDropped);
  const std::unique_ptr<Reporter> reporter = makeReporter(options.json, columns, output.stream());
  const std::string problem =
      hasHome ? "" : missingHomeProblem(options.session, std::getenv("XDG_DATA_HOME"));
  if (!problem.empty()) {
    reporter->note(problem);
    return kExitUsage;
  }
  PlayerSession session(options.session, {[&wakeUp] { wakeUp.raise(); }, askForSlot});
  const int status = options.command == Options::kExplain
                         ? runExplain(options, session, *reporter, output.stream())
                         : runOnQueue(options, session, *reporter, wakeUp);
  if (output.stream().flush()) return status;
  return complainOf("The output could not be written.", *reporter, status);
}

}  // namespace
}  // namespace playerx::cli

int main(int argc, char** argv) {
  using namespace playerx;
  cli::blockInterrupts();
  std::signal(SIGXFSZ, SIG_IGN);  // a write beyond the limit of file sizes fails instead
  const bool hasHome = session::setHome();
  QCoreApplication application(argc, argv);
  QCoreApplication::setOrganizationName("Vesk");
  QCoreApplication::setApplicationName("VeskPlayerX");
  curl_global_init(CURL_GLOBAL_DEFAULT);

  int status = cli::kExitDone;
  const std::optional<cli::Options> options = cli::parseOptions(argc, argv, &status);
  if (!options) return status;
  try {
    return cli::run(*options, hasHome);
  } catch (const std::exception& error) {
    std::cerr << "playerx-cli: " << error.what() << std::endl;
    return cli::kExitFailed;
  }
}
