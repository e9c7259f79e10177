#pragma once

#include "playerx/app/session/PlayerSession.h"
#include "playerx/cli/Options.h"

namespace playerx::cli {

class Reporter;
class WakeUp;

/// Runs a command on the queue of the session's data folder, here or in the process that has
/// it. Returns the program's exit status.
int runOnQueue(const Options& options, session::PlayerSession& session, Reporter& reporter,
               WakeUp& wakeUp);

/// Passes on what plug-ins and session have told the user.
void noteMessages(session::PlayerSession& session, Reporter& reporter);

/// Prints a problem; the exit status for it, or `status` without a problem.
int complainOf(const std::string& problem, Reporter& reporter, int status);

}  // namespace playerx::cli
