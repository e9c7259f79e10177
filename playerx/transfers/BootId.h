#pragma once

#include <string>

namespace playerx::transfers {

/// Names the machine's present run: another text after every start of the system. Empty when the
/// system does not tell. From any thread.
const std::string& bootId();

}  // namespace playerx::transfers
