#include <sys/ioctl.h>
#include <unistd.h>

#include <QCoreApplication>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "playerx/app/session/PlayerSession.h"
#include "playerx/cli/ExplainCommand.h"
#include "playerx/cli/InputList.h"
#include "playerx/cli/Options.h"
#include "playerx/cli/QueueCommand.h"
#include "playerx/cli/Reporter.h"
#include "playerx/cli/SlotQuestion.h"
#include "playerx/cli/StandardOutput.h"
#include "playerx/cli/TerminalText.h"
#include "playerx/cli/WakeUp.h"

namespace playerx::cli {
namespace {

using session::PlayerSession;

constexpr int kUsualColumns = 80;

/// Columns of a terminal; 0 if absent, or when another program has it in the foreground.
int terminalColumns(int terminal) {
  winsize size{};
  if (tcgetpgrp(terminal) != getpgrp() || ioctl(terminal, TIOCGWINSZ, &size) != 0) return 0;
  return size.ws_col == 0 ? kUsualColumns : size.ws_col;
}

std::unique_ptr<Reporter> makeReporter(const Options& options, StandardOutput& output) {
  static std::ostream nothing(nullptr);
  const int terminal = output.descriptor();
  if (options.json) return makeJsonReporter(output.stream(), std::cerr);
  const bool isPrinted = options.request.action == session::Request::Action::kList;
  if (options.quiet && !isPrinted) return makeLineReporter(nothing, std::cerr);
  if (isatty(terminal) == 0) return makeLineReporter(output.stream(), std::cerr);
  return makeLiveReporter(output.stream(), std::cerr,
                          [terminal] { return terminalColumns(terminal); });
}

int runExplain(const Options& options, PlayerSession& session, Reporter& reporter,
               std::ostream& out) {
  const int status = runExplainCommand(options, session.plugins(),
                                       reasons::serverProbe(trustedAuthorities()), out);
  noteMessages(session, reporter);
  return status;
}

/// Adds what the lists of inputs name. False when one cannot be read, which is then said.
bool readInputs(Options& options) {
  if (options.inputFiles.empty()) return true;
  // A list that is typed in is ended by Ctrl-C, with the program.
  const InterruptsAllowed allowed;
  std::string problem;
  for (const std::string& list : options.inputFiles) {
    if (problem.empty()) problem = readInputFile(list, options.request.inputs);
  }
  if (problem.empty() && options.request.inputs.empty()) {
    problem = options.inputFiles.size() > 1
                  ? "The lists name no films."
                  : "The list " + options.inputFiles.front() + " names no films.";
  }
  if (!problem.empty()) {
    std::cerr << "playerx-cli: " << printable(withoutPasswords(problem)) << std::endl;
  }
  return problem.empty();
}

int run(const Options& options, bool hasHome) {
  WakeUp wakeUp;
  const bool takesInterrupts = options.command == Options::kGet ||
                               options.request.action == session::Request::Action::kWatch;
  std::optional<InterruptsAllowed> allowed;
  if (!takesInterrupts) allowed.emplace();
  StandardOutput output(options.diagnostics ? StandardOutput::Diagnostics::kToStandardError
                                            : StandardOutput::Diagnostics::kDropped);
  const std::unique_ptr<Reporter> reporter = makeReporter(options, output);
  std::string problem = session::folderProblem(options.session);
  if (problem.empty() && !hasHome) {
    problem = missingHomeProblem(options.session, std::getenv("XDG_DATA_HOME"));
  }
  if (!problem.empty()) {
    reporter->note(problem);
    return kExitUsage;
  }
  PlayerSession session(options.session, {[&wakeUp] { wakeUp.raise(); }, askForSlot,
                                          [&wakeUp] { return wakeUp.isInterrupted(); }});
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
  QCoreApplication::setApplicationVersion(PLAYERX_VERSION);

  int status = cli::kExitDone;
  std::optional<cli::Options> options = cli::parseOptions(argc, argv, &status);
  if (!options) return status;
  if (!cli::readInputs(*options)) return cli::kExitUsage;
  try {
    return cli::run(*options, hasHome);
  } catch (const std::exception& error) {
    std::cerr << "playerx-cli: " << error.what() << std::endl;
    return cli::kExitFailed;
  }
}
