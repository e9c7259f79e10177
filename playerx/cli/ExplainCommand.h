#pragma once

#include <ostream>
#include <string>

#include "playerx/app/inputs/TicketCheck.h"

namespace playerx {

class PlayerHost;
struct Options;

/// Says, for each ticket that the options name, what would be downloaded: names, addresses, sizes,
/// whether it fits; and for what yields nothing the line with the reason. Queue and tickets stay as
/// they are. Prints to `out`, JSON when the options say so. Returns the program's exit status: 0
/// when every ticket names something.
int runExplainCommand(const Options& options, PlayerHost& host, std::ostream& out);

}  // namespace playerx
