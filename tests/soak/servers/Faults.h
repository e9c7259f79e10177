#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "playerx/transfers/TransferFailure.h"
#include "tests/support/Script.h"

namespace soak {

/// The film that is wanted.
std::string wantedFilm();

/// One thing that a server does wrong in place of a response, and what a transfer may end in.
struct Fault {
  const char* name;
  std::function<support::Script(const std::string& self)> script;  ///< told the server's address
  std::set<playerx::TransferFailure> outcomes;                     ///< `kNone`: the film is whole
};

/// Everything that is tried, in the clear and under TLS.
const std::vector<Fault>& faults();

}  // namespace soak
