#pragma once

#include <ostream>

#include "KPIM/Context.h"
#include "playerx/app/reasons/ServerProbe.h"
#include "playerx/cli/Options.h"

namespace playerx::cli {

/// Says, for each ticket that the options name, what would be downloaded: names, addresses, sizes,
/// whether it fits; and for what yields nothing the line with the reason. Queue and tickets stay as
/// they are. Prints to `out`, JSON when the options say so. Returns the program's exit status: 0
/// when every ticket names something.
int runExplainCommand(const Options& options, KPIM::Context& plugins, const reasons::Probe& probe,
                      std::ostream& out);

}  // namespace playerx::cli
